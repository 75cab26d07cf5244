#include <gtest/gtest.h>

#include "common/JsonParse.h"

namespace KXP {
namespace {

rapidjson::ParseErrorCode Parse(const std::string& text) {
    // Memory of its own exact size, so that a sanitizer sees a read past the end.
    const std::vector<char> bytes(text.begin(), text.end());
    Document document;
    return ParseJSON({bytes.data(), bytes.size()}, document).Code();
}

std::string Times(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

TEST(JsonParse, LimitsHoldForValuesAndNotForText) {
    const std::pair<std::string, rapidjson::ParseErrorCode> cases[] = {
        {Times(512, "[") + Times(512, "]"), rapidjson::kParseErrorNone},
        {Times(513, "[") + Times(513, "]"), rapidjson::kParseErrorTermination},
        {Times(2000, "{\"a\":"), rapidjson::kParseErrorTermination},
        {"[" + Times(2000, "[],") + "0]", rapidjson::kParseErrorNone},
        {"[\"" + Times(600, "[") + "\" /*" + Times(600, "{") + "*/]", rapidjson::kParseErrorNone},
        {"[1e-123456789]", rapidjson::kParseErrorNone},
        {"[1e-1234567890]", rapidjson::kParseErrorTermination},
        {"[1E+1234567890]", rapidjson::kParseErrorTermination},
        {"[1e-00000000000000000001]", rapidjson::kParseErrorNone},
        {"[1e00000000001234567890]", rapidjson::kParseErrorTermination},
        {"[\"\\\"1e1234567890\\\\\"]", rapidjson::kParseErrorNone},
        {"[/* \" 1e1234567890 */ 1] // 1e1234567890", rapidjson::kParseErrorNone},
        {"[/* \" */ 1e1234567890]", rapidjson::kParseErrorTermination},
    };
    for (const auto& [text, code] : cases)
        EXPECT_EQ(Parse(text), code) << text.substr(0, 40);
    // Wherever in a word of eight bytes the exponent stands, and whatever stands before it.
    for (int shift = 0; shift < 17; ++shift) {
        const std::string text = "[\"\\\\\", " + Times(shift, " ") + "7E-1234567890 ]";
        EXPECT_EQ(Parse(text), rapidjson::kParseErrorTermination) << shift;
    }
}

TEST(JsonParse, EncodingIsCheckedInStringsOnly) {
    for (const char* text : {"[\"\\uDC00\"]", "{\"\\uDC00\":1}", "[\"\\uD800x\"]"})
        EXPECT_NE(Parse(text), rapidjson::kParseErrorNone) << text;
    EXPECT_EQ(Parse("[\"gr\xFC\xDF\"]"), rapidjson::kParseErrorStringInvalidEncoding);
    EXPECT_EQ(Parse("[1 /* gr\xFC\xDF */]"), rapidjson::kParseErrorNone);
    EXPECT_EQ(Parse("\xEF\xBB\xBF[1]"), rapidjson::kParseErrorNone);
}

TEST(JsonParse, UnfinishedTextIsAnError) {
    for (const char* text : {"", "\"\\", "\"\\u12", "/*", "[1e", "tru", "-", "\xEF\xBB"})
        EXPECT_NE(Parse(text), rapidjson::kParseErrorNone) << text;
    EXPECT_EQ(Parse(std::string("{}\0behind", 9)), rapidjson::kParseErrorNone);
}

}  // namespace
}  // namespace KXP
