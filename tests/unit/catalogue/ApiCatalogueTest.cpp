// The catalogue held against itself, against the methods that the module answers, and against what the
// validator understands: a keyword that it does not know would be passed over in silence.
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "common/JsonParse.h"
#include "common/message/PayloadSchemas.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"

namespace {

using KXP::Document;
using KXP::Value;
using Names = std::set<std::string>;

const Names kMethods = {"AddMeme",
                        "CancelMontage",
                        "CancelPathUpdate",
                        "CheckDiskSpace",
                        "CopyFile",
                        "CreateMontage",
                        "CreateMontageFromRecipe",
                        "DeleteGroupHighlights",
                        "DeletePreview",
                        "EngraveMP4",
                        "EnqueuePendingHighlight",
                        "EnumerateDrives",
                        "GetAppStats",
                        "GetAppUGC",
                        "GetDriveInfo",
                        "GetEventData",
                        "GetFileMetadata",
                        "GetFolderCRC",
                        "GetFolderListing",
                        "GetHighlightsCount",
                        "GetImageFileDimensions",
                        "GetMontageCloudConfig",
                        "GetRecentUGC",
                        "GetSettings",
                        "GetThumbnail",
                        "IsDirectoryWriteable",
                        "MigrateHighlightsTracker",
                        "MoveFile",
                        "OpenHighlightsGroupSummary",
                        "PreviewPathInfo",
                        "RemoveGalleryItem",
                        "SetSettings",
                        "TranscodeMediaFile",
                        "Trim",
                        "UpdateMontageProgress",
                        "WriteEncryptedBitmap"};
const Names kNotifications = {"GalleryCapStateChangeNotification",
                              "GalleryNotifications",
                              "GalleryUpdatedNotification",
                              "MontageNotification",
                              "PathChangeNotification",
                              "TempFolderChangeNotification"};

class ApiCatalogueTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_FALSE(KXP::ParseJSON(ApiCatalogueText(), catalogue_).IsError());
        ASSERT_TRUE(catalogue_.IsObject() && catalogue_.HasMember("definitions"));
        ASSERT_TRUE(catalogue_["definitions"].IsObject());
    }

    const Value& Definitions() const { return catalogue_["definitions"]; }

    // Calls `visit` for every schema, with its path: the types, the payloads of the commands and all in them.
    using Visit = std::function<void(const std::string& path, const Value& schema)>;
    void VisitSchemas(const Visit& visit) const {
        for (const auto& [name, definition] : Definitions().GetObject()) {
            if (!definition.HasMember("isCommand")) VisitSchema(name.GetString(), definition, visit);
            for (const char* kind : {"parameters", "return"}) {
                if (definition.HasMember(kind))
                    VisitSchema(std::string(name.GetString()) + "." + kind, definition[kind], visit);
            }
        }
    }

    static void VisitSchema(const std::string& path, const Value& schema, const Visit& visit) {
        ASSERT_TRUE(schema.IsObject()) << path;
        visit(path, schema);
        if (schema.HasMember("items")) VisitSchema(path + "[]", schema["items"], visit);
        if (!schema.HasMember("properties")) return;
        ASSERT_TRUE(schema["properties"].IsObject()) << path;
        for (const auto& [name, property] : schema["properties"].GetObject())
            VisitSchema(path + "." + name.GetString(), property, visit);
    }

    Document catalogue_;
};

bool IsLimit(const Value& value) {
    return value.IsUint();
}

// What a keyword's value must be for the validator to heed it; null for a keyword that is not in use.
std::function<bool(const Value&)> KeywordCheck(const std::string& keyword) {
    static const Names types = {"array", "boolean", "integer", "number", "object", "string"};
    if (keyword == "type")
        return [](const Value& v) { return v.IsString() && types.count(v.GetString()) > 0; };
    if (keyword == "enum" || keyword == "required")
        return [](const Value& v) { return v.IsArray() && !v.Empty(); };
    if (keyword == "minimum") return [](const Value& v) { return v.IsNumber(); };
    if (keyword == "minLength" || keyword == "minItems") return IsLimit;
    if (keyword == "properties" || keyword == "items") return [](const Value& v) { return v.IsObject(); };
    if (keyword == "$ref" || keyword == "description") return [](const Value& v) { return v.IsString(); };
    if (keyword == "descritpion" || keyword == "default") return [](const Value&) { return true; };
    return nullptr;
}

TEST_F(ApiCatalogueTest, IsTheFileByteForByte) {
    std::ifstream file(CATALOGUE_FILE, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    ASSERT_FALSE(text.str().empty());
    EXPECT_EQ(text.str(), ApiCatalogueText());
    EXPECT_EQ('\0', *(ApiCatalogueText().data() + ApiCatalogueText().size()));
}

TEST_F(ApiCatalogueTest, NamesEveryMethodOnce) {
    EXPECT_STREQ("http://json-schema.org/draft-07/hyper-schema#", catalogue_["$schema"].GetString());
    EXPECT_STREQ("#gallery", catalogue_["id"].GetString());
    Names all;
    Names methods;
    Names notifications;
    for (const auto& [name, definition] : Definitions().GetObject()) {
        EXPECT_TRUE(all.insert(name.GetString()).second) << name.GetString();
        if (!definition.HasMember("isCommand")) continue;
        EXPECT_TRUE(definition["isCommand"].IsTrue());
        (definition.HasMember("persistent") ? notifications : methods).insert(name.GetString());
    }
    EXPECT_EQ(61u, all.size());
    EXPECT_EQ(kMethods, methods);
    EXPECT_EQ(kNotifications, notifications);
}

TEST_F(ApiCatalogueTest, UsesOnlyWhatTheValidatorHeeds) {
    VisitSchemas([](const std::string& path, const Value& schema) {
        for (const auto& [keyword, value] : schema.GetObject()) {
            const auto check = KeywordCheck(keyword.GetString());
            ASSERT_TRUE(check) << path << ": " << keyword.GetString();
            EXPECT_TRUE(check(value)) << path << ": " << keyword.GetString();
        }
        EXPECT_NE(schema.HasMember("type"), schema.HasMember("$ref")) << path;
        if (schema.HasMember("properties")) {
            EXPECT_STREQ("object", schema["type"].GetString()) << path;
        }
        if (schema.HasMember("items")) {
            EXPECT_STREQ("array", schema["type"].GetString()) << path;
        }
    });
}

TEST_F(ApiCatalogueTest, EveryReferenceIsToASharedType) {
    VisitSchemas([this](const std::string& path, const Value& schema) {
        if (!schema.HasMember("$ref")) return;
        const std::string reference = schema["$ref"].GetString();
        ASSERT_EQ(0u, reference.rfind("#/definitions/", 0)) << path;
        const char* name = reference.c_str() + sizeof "#/definitions/" - 1;
        ASSERT_TRUE(Definitions().HasMember(name)) << path;
        EXPECT_FALSE(Definitions()[name].HasMember("isCommand")) << path;
    });
}

TEST_F(ApiCatalogueTest, RequiredFieldsAreDeclared) {
    Names undeclared;
    VisitSchemas([&undeclared](const std::string& path, const Value& schema) {
        if (!schema.HasMember("required")) return;
        for (const Value& name : schema["required"].GetArray()) {
            if (!schema.HasMember("properties") || !schema["properties"].HasMember(name))
                undeclared.insert(path + "." + name.GetString());
        }
    });
    // Callers send `groups`, whose elements nobody checks.
    EXPECT_EQ(Names{"OpenHighlightsGroupSummary.parameters.groups"}, undeclared);
    // This one stands beside the schema, where it binds nobody.
    EXPECT_TRUE(Definitions()["GetMontageCloudConfig"].HasMember("required"));
    EXPECT_FALSE(Definitions()["GetMontageCloudConfig"]["return"].HasMember("required"));
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
    {"GetFolderCRC", "parameters", R"({"directory":""})", "minLength"},
    {"GetFolderCRC", "return", R"({})", "required"},
    {"GetThumbnail", "parameters", R"({"file":"/a","width":0,"height":1})", "minimum"},
    {"GetThumbnail", "parameters", R"({"file":"/a","width":1.5,"height":1})", "type"},
    {"IsDirectoryWriteable", "return", R"({"writable":true})", nullptr},
    {"EnumerateDrives", "return", R"({"drives":[{"name":"/"}]})", "required"},
    {"GetMontageCloudConfig", "return", R"({})", nullptr},
    {"GetMontageCloudConfig", "return", R"({"montageConfig":{"filters":[{"id":1}]}})", "type"},
    {"OpenHighlightsGroupSummary", "parameters", R"({"app":{},"groupsInfo":[{"groupId":"a"}]})", "required"},
    {"OpenHighlightsGroupSummary", "parameters", R"({"app":{},"groups":[]})", nullptr},
    {"EnqueuePendingHighlight", "parameters", R"({"highlight":{"videoLengthSeconds":-1}})", "minimum"},
    {"PreviewPathInfo", "parameters", R"({"paths":[]})", nullptr},
    {"PreviewPathInfo", "parameters", R"({"paths":["a",1]})", "type"},
    {"TranscodeMediaFile", "parameters", R"({"file":"/a","targetPath":"/b","quality":"ultra"})", nullptr},
    {"TranscodeMediaFile", "parameters", R"({"file":"/a","targetPath":"/b","newDuration":0.5})", "minimum"},
    {"CreateMontageFromRecipe", "parameters", R"({"inputs":[],"recipe":"r","output":"o"})", "minItems"},
    {"CreateMontageFromRecipe", "parameters",
     R"({"inputs":[{"details":{"path":"a","duration":1,"transition":{"speed":1}},"inputFileType":"video"}],
         "recipe":"r","output":"o","storyboard":{"brandZV":{"brandType":"brandSliderInOnly"}}})",
     nullptr},
    {"CreateMontageFromRecipe", "parameters",
     R"({"inputs":[{"details":{"path":"a"},"inputFileType":"video"}],"recipe":"r","output":"o"})",
     "required"},
    {"Trim", "parameters", R"({"input":"a","output":"b","headTrimMs":0,"lengthMs":1})", nullptr},
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
