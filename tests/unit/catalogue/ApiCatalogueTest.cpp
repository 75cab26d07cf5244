// The catalogue compared with itself, with what the validator understands and with the table of requests.
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/json/JsonParse.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"

namespace {

using KXP::Document;
using KXP::Value;
using Names = std::set<std::string>;

using Schemas = std::vector<std::pair<std::string, const Value*>>;

// A schema and everything in it.
void Collect(const std::string& path, const Value& schema, Schemas& schemas) {
    schemas.emplace_back(path, &schema);
    if (schema.HasMember("items")) Collect(path + "[]", schema["items"], schemas);
    if (!schema.HasMember("properties")) return;
    for (const auto& [name, property] : schema["properties"].GetObject())
        Collect(path + "." + name.GetString(), property, schemas);
}

// A keyword that the validator does not know would be ignored silently.
TEST(ApiCatalogue, UsesOnlyWhatTheValidatorUnderstands) {
    const Names types = {"array", "boolean", "integer", "number", "object", "string"};
    const Names keywords = {"type",       "enum",  "required", "minimum",     "minLength",   "minItems",
                            "properties", "items", "$ref",     "description", "descritpion", "default"};
    Document catalogue;
    ASSERT_FALSE(KXP::ParseJSON(ApiCatalogueText(), catalogue).IsError());
    Names names;
    Names referable;
    Schemas schemas;
    for (const auto& [member, definition] : catalogue["definitions"].GetObject()) {
        const std::string name = member.GetString();
        EXPECT_TRUE(names.insert(name).second) << name;
        if (!definition.HasMember("isCommand")) {
            referable.insert("#/definitions/" + name);
            Collect(name, definition, schemas);
        }
        for (const char* kind : {"parameters", "return"})
            if (definition.HasMember(kind)) Collect(name + "." + kind, definition[kind], schemas);
    }
    for (const auto& [path, schema] : schemas) {
        for (const auto& [keyword, value] : schema->GetObject())
            EXPECT_EQ(keywords.count(keyword.GetString()), 1u) << path << ": " << keyword.GetString();
        ASSERT_NE(schema->HasMember("type"), schema->HasMember("$ref")) << path;
        if (schema->HasMember("$ref")) {
            EXPECT_EQ(referable.count((*schema)["$ref"].GetString()), 1u) << path;
            continue;
        }
        const std::string type = (*schema)["type"].GetString();
        EXPECT_EQ(types.count(type), 1u) << path;
        EXPECT_TRUE(type == "object" || !schema->HasMember("properties")) << path;
        EXPECT_TRUE(type == "array" || !schema->HasMember("items")) << path;
    }
}

// A request without an entry is refused before its handler runs, and one without a row has no handler.
TEST(EndpointTable, HasARowForEachRequestOfTheCatalogue) {
    std::map<std::string, std::string> expected = {{"RemoveGalleryItem", "Remove"},
                                                   {"GetFileMetadata", "GetMetaData"},
                                                   {"GetImageFileDimensions", "GetImageDimensions"},
                                                   {"CopyFile", "GalleryCopyFile"},
                                                   {"MoveFile", "GalleryMoveFile"},
                                                   {"IsDirectoryWriteable", "IsDirectoryWritable"},
                                                   {"PreviewPathInfo", "PopulatePreviewPath"},
                                                   {"Trim", "TrimVideo"}};
    Document catalogue;
    ASSERT_FALSE(KXP::ParseJSON(ApiCatalogueText(), catalogue).IsError());
    for (const auto& [name, definition] : catalogue["definitions"].GetObject())
        if (definition.HasMember("isCommand") && !definition.HasMember("persistent"))
            expected.emplace(name.GetString(), name.GetString());  // the handler has the request's name
    expected.erase("MigrateHighlightsTracker");  // of an earlier version; answered as unknown

    std::ifstream file(ENDPOINT_TABLE);
    const std::string table{std::istreambuf_iterator<char>(file), {}};
    const std::regex row(
        R"re(RegisterTask<(\w+)>\("(\w+)"\)|RegisterSyncMethod\(\s*"(\w+)",\s*&\w+,\s*&\w+::(\w+)\))re");
    std::map<std::string, std::string> rows;
    for (std::sregex_iterator match(table.begin(), table.end(), row), end; match != end; ++match) {
        const bool isTask = (*match)[1].matched;
        EXPECT_TRUE(rows.emplace((*match)[isTask ? 2 : 3], (*match)[isTask ? 1 : 4]).second);
    }
    EXPECT_EQ(rows, expected);
}

}  // namespace
