#include <string>

#include <gtest/gtest.h>

#include "common/JsonParse.h"
#include "common/message/PayloadSchemas.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"
#include "tests/support/LogCapture.h"

namespace {

using KXP::Document;
using KXP::PayloadSchemas;
using KXP::RetVal;
using KXP::Value;

Document Parsed(std::string_view text) {
    Document document;
    EXPECT_FALSE(KXP::ParseJSON(text, document).IsError()) << text;
    return document;
}

class PayloadSchemasTest : public testing::Test {
  protected:
    LogCapture log_;
    const Document catalogue_ = Parsed(ApiCatalogueText());
};

TEST_F(PayloadSchemasTest, LogsNamesAndNoValues) {
    PayloadSchemas schemas(catalogue_);
    const Document payload = Parsed(R"({"directory":5,"secret":{"token":"abc"},"list":[{"x":1}],"e":{}})");
    const RetVal result = schemas.Validate("GetFolderCRC", payload, "parameters");
    EXPECT_EQ(static_cast<int32_t>(0x8008F001), result.code);
    EXPECT_TRUE(log_.HasLine(
        1,
        "Could not parse JSON message for method GetFolderCRC: 0x8008f001[0]: Schema 'parameters' validation "
        "error. Problem found at key #/directory. Schema violated: #/properties/directory. Violation: type, "
        "Returned fields: {directory,secret{token},list,e{}}"));
}

TEST_F(PayloadSchemasTest, AcceptsWhatIsNotListed) {
    PayloadSchemas schemas(catalogue_);
    const Document payload = Parsed(R"([{"directory":5}])");
    for (const std::string& method :
         {std::string("Unheard"), std::string(), std::string("GetFolderCRC\0x", 14), std::string("UGC"),
          std::string("#/definitions/UGC"), std::string("CancelMontage"), std::string(100000, 'M')})
        EXPECT_FALSE(schemas.Validate(method, payload, "parameters").Failed()) << method.size();
    EXPECT_FALSE(schemas.Validate("SetSettings", payload, "return").Failed());
    for (const char* text : {"[]", R"({"definitions":[]})", R"({"definitions":{"M":1}})",
                             R"({"definitions":{"M":{"parameters":[]}}})"}) {
        const Document api = Parsed(text);
        EXPECT_FALSE(PayloadSchemas(api).Validate("M", payload, "parameters").Failed()) << text;
    }
}

// A definition that is left out would accept everything.
TEST_F(PayloadSchemasTest, ReachesDefinitionsThroughOthers) {
    const Document api = Parsed(R"({"definitions":{
        "M":{"return":{"properties":{"list":{"items":{"$ref":"#/definitions/Item"}}}}},
        "Item":{"properties":{"next":{"$ref":"#/definitions/Item"},"name":{"$ref":"#/definitions/Name"}}},
        "Name":{"type":"string"}}})");
    PayloadSchemas schemas(api);
    EXPECT_EQ(schemas.Validate("M", Parsed(R"({"list":[{},{"next":{"name":5}}]})"), "return").text,
              "Schema 'return' validation error. Problem found at key #/list/1/next/name. Schema violated: "
              "#/definitions/Name. Violation: type");
    EXPECT_FALSE(schemas.Validate("M", Parsed(R"({"list":[{"name":"a"}]})"), "return").Failed());
}

TEST_F(PayloadSchemasTest, ComparesNumbersBeyondAnyInteger) {
    const Document api = Parsed(R"({"definitions":{"M":{"parameters":{
        "properties":{"speed":{"enum":[0.5,1.0,2.0]},"length":{"minimum":1}}}}}})");
    PayloadSchemas schemas(api);
    for (const char* wrong :
         {R"({"speed":1e300})", R"({"speed":18446744073709551616})", R"({"length":-1e300})"})
        EXPECT_TRUE(schemas.Validate("M", Parsed(wrong), "parameters").Failed()) << wrong;
    for (const char* right : {R"({"speed":1})", R"({"speed":0.5})", R"({"length":1e300})"})
        EXPECT_FALSE(schemas.Validate("M", Parsed(right), "parameters").Failed()) << right;
}

// What the JSON library would end the program for is an exception, and so a failed check.
TEST_F(PayloadSchemasTest, OneBrokenSchemaHurtsNoOther) {
    const Document api = Parsed(R"({"definitions":{"Broken":{"parameters":{"properties":
        {"a":{"patternProperties":3}}}},"Whole":{"parameters":{"properties":{"a":{"type":"string"}}}}}})");
    PayloadSchemas schemas(api);
    for (int round = 1; round <= 2; ++round) {
        EXPECT_EQ(static_cast<int32_t>(0x8000FFFF),
                  schemas.Validate("Broken", Parsed("{}"), "parameters").code);
        EXPECT_EQ(round, log_.Count("message for method Broken: 0x8000ffff"));
        EXPECT_TRUE(schemas.Validate("Whole", Parsed(R"({"a":1})"), "parameters").Failed());
    }
}

}  // namespace
