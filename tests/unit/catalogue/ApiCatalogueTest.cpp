// The catalogue held against itself, against the methods that the module answers, and against what the
// validator understands: a keyword that it does not know would be passed over in silence.
#include <fstream>
#include <set>
#include <sstream>
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

struct Schema {
    std::string path;
    const Value* value;
};

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
        schemas_.push_back({path, &schema});
        if (schema.HasMember("items")) Collect(path + "[]", schema["items"]);
        if (!schema.HasMember("properties")) return;
        for (const auto& [name, property] : schema["properties"].GetObject())
            Collect(path + "." + name.GetString(), property);
    }

    Document catalogue_;
    std::vector<Schema> schemas_;  // the types, the payloads of the commands and all in them
};

TEST_F(ApiCatalogueTest, IsTheFileByteForByte) {
    std::ifstream file(CATALOGUE_FILE, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    EXPECT_EQ(text.str(), ApiCatalogueText());
}

TEST_F(ApiCatalogueTest, NamesEveryMethodOnce) {
    Names all;
    Names methods;
    Names notifications;
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
    for (const Schema& schema : schemas_) {
        for (const auto& [keyword, value] : schema.value->GetObject())
            EXPECT_EQ(keywords.count(keyword.GetString()), 1u) << schema.path << ": " << keyword.GetString();
        const bool isReference = schema.value->HasMember("$ref");
        ASSERT_NE(schema.value->HasMember("type"), isReference) << schema.path;
        if (isReference) {
            const std::string reference = (*schema.value)["$ref"].GetString();
            ASSERT_EQ(0u, reference.rfind("#/definitions/", 0)) << schema.path;
            const std::string name = reference.substr(reference.rfind('/') + 1);
            ASSERT_TRUE(catalogue_["definitions"].HasMember(name)) << schema.path;
            EXPECT_FALSE(catalogue_["definitions"][name].HasMember("isCommand")) << schema.path;
            continue;
        }
        const std::string type = (*schema.value)["type"].GetString();
        EXPECT_EQ(types.count(type), 1u) << schema.path;
        EXPECT_TRUE(type == "object" || !schema.value->HasMember("properties")) << schema.path;
        EXPECT_TRUE(type == "array" || !schema.value->HasMember("items")) << schema.path;
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

struct PayloadCase {
    const char* method;
    const char* kind;
    const char* payload;
    const char* violated;  // the keyword; null for a payload that passes
};

const PayloadCase kPayloads[] = {
    {"GetFolderListing", "parameters", R"({"directory":"/a","aFieldOfALaterClient":[{}]})", nullptr},
    {"GetFolderListing", "parameters", R"({"directory":"/a","excludeDirectoryType":"all"})", "enum"},
    {"GetFolderListing", "return", R"({"files":[{"subtype":"Exr"},{"subtype":"Screenshot"}]})", "enum"},
    {"GetThumbnail", "parameters", R"({"file":"/a","width":0,"height":1})", "minimum"},
    {"GetMontageCloudConfig", "return", R"({})", nullptr},
    {"OpenHighlightsGroupSummary", "parameters", R"({"app":{},"groupsInfo":[{"groupId":"a"}]})", "required"},
    {"OpenHighlightsGroupSummary", "parameters", R"({"app":{},"groups":[]})", nullptr},
    {"TranscodeMediaFile", "parameters", R"({"file":"/a","targetPath":"/b","quality":"ultra"})", nullptr},
    {"CreateMontageFromRecipe", "parameters", R"({"inputs":[],"recipe":"r","output":"o"})", "minItems"},
    {"CreateMontageFromRecipe", "parameters",
     R"({"inputs":[{"details":{"path":"a","duration":1,"transition":{"speed":1}},"inputFileType":"video"}],
         "recipe":"r","output":"o","storyboard":{"brandZV":{"brandType":"brandSliderInOnly"}}})",
     nullptr},
    {"GalleryNotifications", "return", R"({"ugcDeleted":{"ugc":{"fileSource":"Elsewhere"}}})", "enum"},
    {"CancelMontage", "parameters", R"({"anything":1})", nullptr},
};

TEST_F(ApiCatalogueTest, JudgesPayloads) {
    KXP::PayloadSchemas schemas(catalogue_);
    for (const PayloadCase& row : kPayloads) {
        Document payload;
        ASSERT_FALSE(KXP::ParseJSON(row.payload, payload).IsError()) << row.payload;
        const KXP::RetVal result = schemas.Validate(row.method, payload, row.kind);
        const std::string ending = row.violated ? std::string(". Violation: ") + row.violated : "Success";
        EXPECT_EQ(row.violated != nullptr, result.Failed()) << row.method << " " << row.payload;
        ASSERT_GE(result.text.size(), ending.size());
        EXPECT_EQ(ending, result.text.substr(result.text.size() - ending.size())) << row.payload;
    }
}

}  // namespace
