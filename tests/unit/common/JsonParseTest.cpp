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

std::string Nested(int depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

TEST(JsonParse, NestingEndsAt512) {
    EXPECT_EQ(Parse(Nested(512)), rapidjson::kParseErrorNone);
    EXPECT_EQ(Parse(Nested(513)), rapidjson::kParseErrorTermination);
    std::string objects;
    std::string wide = "[";
    for (int i = 0; i < 2000; ++i) {
        objects += "{\"a\":";
        wide += "[],";
    }
    EXPECT_EQ(Parse(objects), rapidjson::kParseErrorTermination);
    // Width is not depth, and brackets in strings and comments are text.
    EXPECT_EQ(Parse(wide + "0]"), rapidjson::kParseErrorNone);
    EXPECT_EQ(Parse("[\"" + std::string(600, '[') + "\" /*" + std::string(600, '{') + "*/]"),
              rapidjson::kParseErrorNone);
}

TEST(JsonParse, ExponentsEndAtNineSignificantDigits) {
    EXPECT_EQ(Parse("[1e-123456789]"), rapidjson::kParseErrorNone);
    EXPECT_EQ(Parse("[1e-1234567890]"), rapidjson::kParseErrorTermination);
    EXPECT_EQ(Parse("[1E+1234567890]"), rapidjson::kParseErrorTermination);
    EXPECT_EQ(Parse("[1e-00000000000000000001]"), rapidjson::kParseErrorNone);
    EXPECT_EQ(Parse("[1e00000000001234567890]"), rapidjson::kParseErrorTermination);
    // Wherever in a word of eight bytes the exponent stands, and whatever stands before it.
    for (int shift = 0; shift < 17; ++shift) {
        const std::string space(shift, ' ');
        EXPECT_EQ(Parse(space + "[0.5e-1234567890]"), rapidjson::kParseErrorTermination) << shift;
        EXPECT_EQ(Parse("[\"\\\\\", " + space + "7E-1234567890 ]"), rapidjson::kParseErrorTermination)
            << shift;
    }
}

TEST(JsonParse, ExponentsInStringsAndCommentsAreText) {
    EXPECT_EQ(Parse("[\"\\\"1e1234567890\\\\\"]"), rapidjson::kParseErrorNone);
    EXPECT_EQ(Parse("[/* \" 1e1234567890 */ 1] // 1e1234567890"), rapidjson::kParseErrorNone);
    EXPECT_EQ(Parse("[/* \" */ 1e1234567890]"), rapidjson::kParseErrorTermination);
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
