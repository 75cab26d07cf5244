// The catalogue held against itself, against the methods that the module answers, and against what the
// validator understands: a keyword that it does not know would be passed over in silence.
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/JsonParse.h"
#include "common/message/PayloadSchemas.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"

namespace {

using KXP::Document;
using KXP::Value;
using Names = std::set<std::string>;

std::string Joined(const Names& names) {
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : " ") + name;
    return text;
}

// In the order of the alphabet.
const std::string kMethods =
    "AddMeme CancelMontage CancelPathUpdate CheckDiskSpace CopyFile CreateMontage "
    "CreateMontageFromRecipe DeleteGroupHighlights DeletePreview EngraveMP4 EnqueuePendingHighlight "
    "EnumerateDrives GetAppStats GetAppUGC GetDriveInfo GetEventData GetFileMetadata GetFolderCRC "
    "GetFolderListing GetHighlightsCount GetImageFileDimensions GetMontageCloudConfig GetRecentUGC "
    "GetSettings GetThumbnail IsDirectoryWriteable MigrateHighlightsTracker MoveFile "
    "OpenHighlightsGroupSummary PreviewPathInfo RemoveGalleryItem SetSettings TranscodeMediaFile "
    "Trim UpdateMontageProgress WriteEncryptedBitmap";
const std::string kNotifications =
    "GalleryCapStateChangeNotification GalleryNotifications GalleryUpdatedNotification "
    "MontageNotification PathChangeNotification TempFolderChangeNotification";

class ApiCatalogueTest : public testing::Test {
  protected:
    ApiCatalogueTest() {
        EXPECT_FALSE(KXP::ParseJSON(ApiCatalogueText(), catalogue_).IsError());
        for (const auto& [name, definition] : catalogue_["definitions"].GetObject()) {
            if (!definition.HasMember("isCommand")) Collect(name.GetString(), definition);
            for (const char* kind : {"parameters", "return"}) {
                if (definition.HasMember(kind))
                    Collect(std::string(name.GetString()) + "." + kind, definition[kind]);
            }
        }
    }

    void Collect(const std::string& path, const Value& schema) {
        schemas_.emplace_back(path, &schema);
        if (schema.HasMember("items")) Collect(path + "[]", schema["items"]);
        if (!schema.HasMember("properties")) return;
        for (const auto& [name, property] : schema["properties"].GetObject())
            Collect(path + "." + name.GetString(), property);
    }

    Document catalogue_;
    // The types, the payloads of the commands and all in them.
    std::vector<std::pair<std::string, const Value*>> schemas_;
};

TEST_F(ApiCatalogueTest, NamesEveryMethodOnce) {
    Names all, methods, notifications;
    for (const auto& [name, definition] : catalogue_["definitions"].GetObject()) {
        EXPECT_TRUE(all.insert(name.GetString()).second) << name.GetString();
        if (!definition.HasMember("isCommand")) continue;
        (definition.HasMember("persistent") ? notifications : methods).insert(name.GetString());
    }
    EXPECT_EQ(61u, all.size());
    EXPECT_EQ(kMethods, Joined(methods));
    EXPECT_EQ(kNotifications, Joined(notifications));
}

TEST_F(ApiCatalogueTest, UsesOnlyWhatTheValidatorHeeds) {
    const Names types = {"array", "boolean", "integer", "number", "object", "string"};
    const Names keywords = {"type",       "enum",  "required", "minimum",     "minLength",   "minItems",
                            "properties", "items", "$ref",     "description", "descritpion", "default"};
    const std::string referred = "#/definitions/";
    for (const auto& [path, schema] : schemas_) {
        for (const auto& [keyword, value] : schema->GetObject())
            EXPECT_EQ(keywords.count(keyword.GetString()), 1u) << path << ": " << keyword.GetString();
        ASSERT_NE(schema->HasMember("type"), schema->HasMember("$ref")) << path;
        if (schema->HasMember("$ref")) {
            const std::string reference = (*schema)["$ref"].GetString();
            ASSERT_EQ(referred, reference.substr(0, referred.size())) << path;
            const auto found =
                catalogue_["definitions"].FindMember(reference.substr(referred.size()).c_str());
            ASSERT_NE(found, catalogue_["definitions"].MemberEnd()) << path;
            EXPECT_FALSE(found->value.HasMember("isCommand")) << path;
            continue;
        }
        const std::string type = (*schema)["type"].GetString();
        EXPECT_EQ(types.count(type), 1u) << path;
        EXPECT_TRUE(type == "object" || !schema->HasMember("properties")) << path;
        EXPECT_TRUE(type == "array" || !schema->HasMember("items")) << path;
    }
}

TEST_F(ApiCatalogueTest, RequiredFieldsAreDeclared) {
    Names undeclared;
    for (const auto& [path, schema] : schemas_) {
        if (!schema->HasMember("required")) continue;
        for (const Value& name : (*schema)["required"].GetArray()) {
            if (!schema->HasMember("properties") || !(*schema)["properties"].HasMember(name))
                undeclared.insert(path + "." + name.GetString());
        }
    }
    // Callers send `groups`, whose elements nobody checks.
    EXPECT_EQ(Names{"OpenHighlightsGroupSummary.parameters.groups"}, undeclared);
}

TEST_F(ApiCatalogueTest, JudgesPayloads) {
    struct {
        const char *method, *kind, *payload;
        std::string violated;  // the keyword, or "Success"
    } const cases[] = {
        {"GetFolderListing", "parameters", R"({"directory":"/a","aFieldOfALaterClient":[{}]})", "Success"},
        {"GetFolderListing", "return", R"({"files":[{"subtype":"Exr"},{"subtype":"Screenshot"}]})", "enum"},
        {"GetThumbnail", "parameters", R"({"file":"/a","width":0,"height":1})", "minimum"},
        {"OpenHighlightsGroupSummary", "parameters", R"({"app":{},"groups":[]})", "Success"},
        {"CreateMontageFromRecipe", "parameters", R"({"inputs":[],"recipe":"r","output":"o"})", "minItems"},
        {"GalleryNotifications", "return", R"({"ugcDeleted":{"ugc":{"fileSource":"Elsewhere"}}})", "enum"},
    };
    KXP::PayloadSchemas schemas(catalogue_);
    for (const auto& row : cases) {
        Document payload;
        ASSERT_FALSE(KXP::ParseJSON(row.payload, payload).IsError()) << row.payload;
        const KXP::RetVal result = schemas.Validate(row.method, payload, row.kind);
        EXPECT_EQ(row.violated, result.text.substr(result.text.rfind(' ') + 1)) << row.payload;
    }
}

}  // namespace
