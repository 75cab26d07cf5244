// Envelopes, and the schemas that their payloads are checked against.
#include <gtest/gtest.h>

#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "common/message/Message.h"
#include "common/message/PayloadSchemas.h"
#include "common/results/Exception.h"
#include "tests/support/LogCapture.h"

namespace Message = KXP::Message;
using KXP::Document;
using KXP::PayloadSchemas;

namespace {

Document Parsed(std::string_view text) {
    Document document;
    EXPECT_FALSE(KXP::ParseJSON(text, document).IsError()) << text;
    return document;
}

}  // namespace

TEST(Message, RefusesWhatIsNoEnvelope) {
    const std::string noEnvelope = "Unable to parse JSON envelope";
    const std::pair<std::string, std::string> rows[] = {
        {"[]", noEnvelope},
        {"{\"system\":\"\xFF\"}", noEnvelope},
        {std::string(100000, '[') + std::string(100000, ']'), noEnvelope},
        {R"({"payload":[]})", "Expected payload field to be an object"},
        {"{}", "Could not find required field system"},
        {R"({"system":5,"module":"m"})", "Required string system unexpected type Number"},
        {R"({"system":"s","module":""})", "Required string module is empty"},
        {R"({"system":"s","module":"m\u0000"})", "Required string module holds a zero character"},
        {R"({"system":"s","module":"m","uniqueid":"u"})", "Could not find required field method"},
        {R"({"system":"s","module":"m","method":"x","uniqueid":true})",
         "Required string uniqueid unexpected type Bool"},
    };
    EXPECT_THROW(Message::CreateMessage(nullptr), KXP::JSONFieldError);
    for (const auto& [json, text] : rows) {
        try {
            Message::CreateMessage(json.c_str());
            ADD_FAILURE() << json;
        } catch (const KXP::JSONFieldError& error) {
            EXPECT_EQ(static_cast<uint32_t>(error.code()), 0x8008F001u);
            EXPECT_EQ(error.message(), text);
        }
    }
}

TEST(Message, AResponseGoesBackWhereTheRequestCameFrom) {
    const auto request = Message::CreateRequest("sys", "mod", "Do", "from", "page", R"({"a":1})");
    const auto response = Message::CreateResponse(*request);
    Message::SetReturnValue(*response, {static_cast<int32_t>(0x80070057), "bad", 7});
    response->set_uniqueid("new");
    KXP::JsonBuffer text;
    EXPECT_TRUE(response->Serialize(text));
    EXPECT_EQ(Parsed(text.GetString()),
              Parsed(R"({"system":"from","module":"page","source_system":"sys","source_module":"mod",)"
                     R"("method":"Do","uniqueid":"new","type":3072,"reference_uniqueid":")" +
                     std::string(request->uniqueid()) +
                     R"(","payload":{"_return_code":-2147024809,"_return_status":"bad",)"
                     R"("_return_internal":7}})"));
    EXPECT_STRNE(Message::CreateResponse(*request)->uniqueid(), request->uniqueid());
    EXPECT_THROW(Message::CreateRequest("s", "m", "Do", "", "", "{"), KXP::JSONFieldError);
}

TEST(PayloadSchemas, AFailureNamesMembersAndNoValues) {
    const LogCapture log;
    // A definition that is left out would accept everything.
    const Document api = Parsed(R"({"definitions":{
        "M":{"return":{"properties":{"list":{"items":{"$ref":"#/definitions/Item"}}}}},
        "Item":{"properties":{"next":{"$ref":"#/definitions/Item"},"name":{"$ref":"#/definitions/Name"}}},
        "Name":{"type":"string"}}})");
    PayloadSchemas schemas(api);
    const std::string text =
        "Schema 'return' validation error. Problem found at key #/list/1/next/name. Schema violated: "
        "#/definitions/Name. Violation: type";
    const auto check = [&](const char* payload, const char* kind = "return") {
        return KXP::ToStr(schemas.Validate("M", Parsed(payload), kind));
    };
    EXPECT_EQ(check(R"({"list":[{},{"next":{"name":5}}],"secret":{"token":"abc"},"e":{}})"),
              "0x8008f001[0]: " + text);
    EXPECT_TRUE(log.HasLine(1, "Could not parse JSON message for method M: 0x8008f001[0]: " + text +
                                   ", Returned fields: {list,secret{token},e{}}"))
        << log.Lines()[0];
    EXPECT_EQ(check(R"({"list":[{"name":"a"}]})"), "0x00000000[0]: Success");
    EXPECT_EQ(check("[]", "parameters"), "0x00000000[0]: Success") << "no schema for these";
    EXPECT_FALSE(schemas.Validate("Unheard", Parsed("[]"), "return").Failed());
}

TEST(PayloadSchemas, NumbersBeyondAnyIntegerAreCompared) {
    const LogCapture log;
    const Document api = Parsed(R"({"definitions":{"M":{"parameters":{
        "properties":{"speed":{"enum":[0.5,1.0,2.0]},"length":{"minimum":1}}}}}})");
    PayloadSchemas schemas(api);
    for (const char* wrong :
         {R"({"speed":1e300})", R"({"speed":18446744073709551616})", R"({"length":-1e300})"})
        EXPECT_TRUE(schemas.Validate("M", Parsed(wrong), "parameters").Failed()) << wrong;
    for (const char* right : {R"({"speed":1})", R"({"speed":0.5})", R"({"length":1e300})"})
        EXPECT_FALSE(schemas.Validate("M", Parsed(right), "parameters").Failed()) << right;
}
