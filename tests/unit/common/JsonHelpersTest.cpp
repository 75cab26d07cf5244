#include <gtest/gtest.h>

#include "common/JsonHelpers.h"
#include "common/JsonParse.h"
#include "tests/unit/common/Thrown.h"

namespace KXP {
namespace {

Document Parsed(const std::string& text) {
    Document document;
    EXPECT_FALSE(ParseJSON(text, document).IsError()) << text;
    return document;
}

TEST(JsonHelpers, NumbersMatchByWhatFitsThem) {
    const Document json = Parsed(R"({"minus":-1,"big":4294967295,"huge":9223372036854775808})");
    EXPECT_EQ(jsonGetValueOrDefault<unsigned int>(json, "minus", 7u), 7u);
    EXPECT_EQ(jsonGetValueOrDefault<int>(json, "big", 7), 7);
    EXPECT_EQ(jsonGetValue<unsigned int>(json, "big"), 4294967295u);
    EXPECT_EQ(jsonGetValueOrDefault<long long>(json, "huge", 7), 7);
}

TEST(JsonHelpers, ComplaintsNameTheKeyAndTheType) {
    const Document json = Parsed(R"({"s":"Pear","n":null,"o":{},"a":[],"t":true,"x":1})");
    const std::pair<const char*, const char*> types[] = {
        {"n", "Null"}, {"t", "Bool"}, {"o", "Object"}, {"a", "Array"}, {"x", "Number"}};
    for (const auto& [key, type] : types) {
        EXPECT_EQ(Thrown([&, name = key] { jsonGetValue<std::string>(json, name); }),
                  std::string("0x8008f001[0]: Found key '") + key + "', with unexpected type: " + type);
    }
    EXPECT_EQ(Thrown([&] { jsonGetValue<int>(json, "key"); }), "0x8008f001[0]: Missing mandatory field key");
    const std::map<std::string, int> fruits = {{"pear", 1}};
    EXPECT_EQ(Thrown([&] { jsonGetEnum(json, "s", fruits); }),
              "0x8008f001[0]: Found a string at key 's' with value 'Pear', but cannot map that to an enum "
              "value");
}

}  // namespace
}  // namespace KXP
