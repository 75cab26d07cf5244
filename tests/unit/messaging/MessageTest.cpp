#include <string>

#include <gtest/gtest.h>

#include "common/Exception.h"
#include "common/JsonHelpers.h"
#include "common/JsonParse.h"
#include "common/message/Message.h"

using KXP::JSONMessage;
namespace Message = KXP::Message;

namespace {

// The text of the JSONFieldError that parsing `json` throws; "" when it is taken.
std::string Refusal(const char* json) {
    try {
        Message::CreateMessage(json);
    } catch (const KXP::JSONFieldError& error) {
        EXPECT_EQ(static_cast<uint32_t>(error.code()), 0x8008F001u);
        EXPECT_EQ(error.internal(), 0);
        return error.message();
    }
    return "";
}

std::string Text(const JSONMessage& message) {
    KXP::JsonBuffer buffer;
    EXPECT_TRUE(message.Serialize(buffer));
    return buffer.GetString();
}

}  // namespace

TEST(Message, RefusesWhatIsNoEnvelope) {
    const std::string noEnvelope = "Unable to parse JSON envelope";
    EXPECT_EQ(Refusal(nullptr), noEnvelope);
    EXPECT_EQ(Refusal(""), noEnvelope);
    EXPECT_EQ(Refusal("[]"), noEnvelope);
    EXPECT_EQ(Refusal("{\"system\":\"\xFF\"}"), noEnvelope);
    EXPECT_EQ(Refusal("{\"a\":1e1234567890}"), noEnvelope);
    EXPECT_EQ(Refusal((std::string(100000, '[') + std::string(100000, ']')).c_str()), noEnvelope);

    EXPECT_EQ(Refusal(R"({"payload":[]})"), "Expected payload field to be an object");
    EXPECT_EQ(Refusal("{}"), "Could not find required field system");
    EXPECT_EQ(Refusal(R"({"system":5,"module":"m"})"), "Required string system unexpected type Number");
    EXPECT_EQ(Refusal(R"({"system":true})"), "Required string system unexpected type Bool");
    EXPECT_EQ(Refusal(R"({"system":"s","module":""})"), "Required string module is empty");
    EXPECT_EQ(Refusal(R"({"system":"s","module":"m","uniqueid":"u"})"),
              "Could not find required field method");
    EXPECT_EQ(Refusal(R"({"system":"s","module":"m","method":"x","uniqueid":null})"),
              "Required string uniqueid unexpected type Null");
}

TEST(Message, ReadsAnEnvelopeAndGivesDefaultsForTheRest) {
    const auto message = Message::CreateMessage(
        R"({"system":"a","module":"b","method":"c","uniqueid":"d","source_system":5,"type":"x"})");
    EXPECT_TRUE(KXP::WriteJSONToString(message->payload()) == "{}");
    EXPECT_TRUE(message->has_source_system());
    EXPECT_STREQ(message->source_system(), "");
    EXPECT_FALSE(message->has_type());
    EXPECT_EQ(message->type(), 0);
    const KXP::RetVal value = Message::GetReturnValue(*message);
    EXPECT_EQ(value.code, 0);
    EXPECT_EQ(value.text, "Success");
    EXPECT_STREQ(Message::CreateResponse(*message)->target_system(), "");
}

TEST(Message, AResponseGoesBackWhereTheRequestCameFrom) {
    const auto request = Message::CreateRequest("sys", "mod", "Do", "from", "page", R"({"a":1})");
    const auto response = Message::CreateResponse(*request);
    Message::SetReturnValue(*response, {static_cast<int32_t>(0x80070057), "bad", 7});
    KXP::Document document;
    ASSERT_FALSE(KXP::ParseJSON(Text(*response), document).IsError());
    const std::pair<const char*, const char*> fields[] = {{"system", "from"},
                                                          {"module", "page"},
                                                          {"source_system", "sys"},
                                                          {"source_module", "mod"},
                                                          {"method", "Do"}};
    for (const auto& [name, value] : fields)
        EXPECT_STREQ(document[name].GetString(), value) << name;
    EXPECT_STREQ(document["reference_uniqueid"].GetString(), request->uniqueid());
    EXPECT_STRNE(document["uniqueid"].GetString(), request->uniqueid());
    EXPECT_EQ(document["type"].GetInt(), 3072);
    EXPECT_EQ(document["payload"]["_return_code"].GetInt(), -2147024809);
    EXPECT_STREQ(document["payload"]["_return_status"].GetString(), "bad");
    EXPECT_EQ(document["payload"]["_return_internal"].GetInt(), 7);
    EXPECT_THROW(Message::CreateRequest("s", "m", "Do", "", "", "{"), KXP::JSONFieldError);
}
