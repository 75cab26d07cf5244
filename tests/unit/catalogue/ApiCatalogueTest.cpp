// The catalogue compared with itself and with what the validator understands: a keyword that the validator
// does not know would be ignored silently.
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/JsonParse.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"

namespace {

using KXP::Document;
using KXP::Value;
using Names = std::set<std::string>;

class ApiCatalogueTest : public testing::Test {
  protected:
    ApiCatalogueTest() {
        EXPECT_FALSE(KXP::ParseJSON(ApiCatalogueText(), catalogue_).IsError());
        Names names;
        for (const auto& [name, definition] : catalogue_["definitions"].GetObject()) {
            EXPECT_TRUE(names.insert(name.GetString()).second) << name.GetString();
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
    // Of the types, of the commands' payloads and of everything in them.
    std::vector<std::pair<std::string, const Value*>> schemas_;
};

TEST_F(ApiCatalogueTest, UsesOnlyWhatTheValidatorUnderstands) {
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

}  // namespace
