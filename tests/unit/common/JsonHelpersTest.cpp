#include <gtest/gtest.h>

#include "common/JsonHelpers.h"
#include "common/JsonParse.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"
#include "tests/unit/common/Thrown.h"

namespace KXP {
namespace {

Document Parsed(const std::string& text) {
    Document document;
    EXPECT_FALSE(ParseJSON(text, document).IsError()) << text;
    return document;
}

enum class Fruit { kNone, kApple, kPear };
const std::map<std::string, Fruit> kFruits = {{"apple", Fruit::kApple}, {"pear", Fruit::kPear}};

TEST(JsonHelpers, NumbersMatchByWhatFitsThem) {
    const Document json = Parsed(R"({"minus":-1,"big":4294967295,"huge":9223372036854775808,"half":0.5})");
    EXPECT_EQ(jsonGetValueOrDefault<unsigned int>(json, "minus", 7u), 7u);
    EXPECT_EQ(jsonGetValueOrDefault<int>(json, "big", 7), 7);
    EXPECT_EQ(jsonGetValue<unsigned int>(json, "big"), 4294967295u);
    EXPECT_EQ(jsonGetValueOrDefault<long long>(json, "huge", 7), 7);
    EXPECT_EQ(jsonGetValue<unsigned long long>(json, "huge"), 9223372036854775808ull);
    EXPECT_EQ(jsonGetValueOrDefault<int>(json, "half", 7), 7);
}

TEST(JsonHelpers, ComplaintsNameTheKeyAndTheType) {
    const Document json = Parsed(R"({"s":"Pear","n":null,"o":{},"a":[],"t":true,"x":1})");
    LogCapture log;
    const std::pair<const char*, const char*> types[] = {
        {"n", "Null"}, {"t", "Bool"}, {"o", "Object"}, {"a", "Array"}, {"x", "Number"}};
    for (const auto& [key, type] : types) {
        EXPECT_EQ(Thrown([&, name = key] { jsonGetValue<std::string>(json, name); }),
                  std::string("0x8008f001[0]: Found key '") + key + "', with unexpected type: " + type);
    }
    EXPECT_EQ(Thrown([&] { jsonGetEnum(json, "s", kFruits); }),
              "0x8008f001[0]: Found a string at key 's' with value 'Pear', but cannot map that to an enum "
              "value");
    EXPECT_TRUE(jsonGetValueOrDefault<bool>(json, "s", true));
    EXPECT_EQ(jsonGetEnumOrDefault(json, "s", kFruits, Fruit::kApple), Fruit::kApple);
    EXPECT_EQ(jsonGetEnumOrDefault(json, "x", kFruits, Fruit::kApple), Fruit::kApple);
    EXPECT_TRUE(log.Lines().empty());
}

TEST(JsonHelpers, MissingMembersAndNoObjectAreLogged) {
    const Document json = Parsed(R"({"a":1})");
    const Document array = Parsed("[1]");
    LogCapture log;
    EXPECT_EQ(Thrown([&] { jsonGetValue<int>(json, "key"); }), "0x8008f001[0]: Missing mandatory field key");
    EXPECT_TRUE(log.HasLine(1, "Missing mandatory field key"));
    EXPECT_EQ(jsonGetValueOrDefault<int>(array, "key", 3), 3);
    EXPECT_TRUE(log.HasLine(1, "Invalid object passed to JSONGetValueOrDefault. Desired key=key"));
    EXPECT_EQ(Thrown([&] { JSONGetObject(json, "a"); }),
              "0x8008f001[0]: Found object with key a, with unexpected type 6");
    EXPECT_TRUE(JSONGetArrayOrEmpty(json, "a").IsArray());
    EXPECT_EQ(log.Count("Found object with key a, with unexpected type 6"), 2);
}

TEST(JsonHelpers, KeysAreComparedByLengthAndTheFirstWins) {
    const Document json = Parsed(R"({"a\u0000b":1,"a":2,"a":3})");
    EXPECT_EQ(jsonGetValue<int>(json, "a"), 2);
    EXPECT_EQ(jsonGetValue<int>(json, std::string_view("a\0b", 3)), 1);
}

TEST(JsonHelpers, StringsOfAnArrayPassOverTheRest) {
    LogCapture log;
    EXPECT_EQ(JSONGetStrings(Parsed(R"({"s":["a",1,"b"]})"), "s"), (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(log.HasLine(1, "Found non-string in array. Expected all strings in array s"));
}

TEST(JsonHelpers, ReadJsonTakesCommentsAndRefusesTheRest) {
    const TempFolder folder;
    LogCapture log;
    Document json;
    EXPECT_TRUE(ReadJSON(folder.Write("good.json", "// one\n{\"a\": /* two */ 1}"), json));
    EXPECT_FALSE(ReadJSON(folder / "absent.json", json));
    EXPECT_TRUE(log.Lines().empty());
    const std::string path = folder.Write("bad.json", "[1]");
    EXPECT_FALSE(ReadJSON(path, json));
    EXPECT_TRUE(log.HasLine(1, "Document at " + path + " has no root object"));
    for (const char* text : {"\xEF\xBB\xBF{}", "", "{}{}", "{\"a\":\"\xC3\"}"}) {
        log.Clear();
        EXPECT_FALSE(ReadJSON(folder.Write("bad.json", text), json)) << text;
        EXPECT_TRUE(log.HasLine(1, "Error parsing JSON document " + path));
    }
}

}  // namespace
}  // namespace KXP
