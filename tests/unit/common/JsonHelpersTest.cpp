#include <gtest/gtest.h>

#include "common/JsonHelpers.h"
#include "common/JsonParse.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace KXP {
namespace {

Document Parsed(const std::string& text) {
    Document document;
    EXPECT_FALSE(ParseJSON(text, document).IsError()) << text;
    return document;
}

template <typename Call>
std::string ThrownText(Call call) {
    try {
        call();
    } catch (const JSONFieldError& error) {
        EXPECT_EQ(static_cast<uint32_t>(error.code()), 0x8008F001u);
        return error.message();
    }
    return "nothing thrown";
}

enum class Fruit { kNone, kApple, kPear };
const std::map<std::string, Fruit> kFruits = {{"apple", Fruit::kApple}, {"pear", Fruit::kPear}};

TEST(JsonHelpers, NumbersMatchByWhatFitsThem) {
    const Document json =
        Parsed(R"({"five":5,"minus":-1,"big":4294967295,"huge":9223372036854775808,"half":0.5})");
    EXPECT_EQ(jsonGetValue<double>(json, "five"), 5.0);
    EXPECT_EQ(jsonGetValue<double>(json, "huge"), 9223372036854775808.0);
    EXPECT_EQ(jsonGetValue<unsigned int>(json, "five"), 5u);
    EXPECT_EQ(jsonGetValueOrDefault<unsigned int>(json, "minus", 7u), 7u);
    EXPECT_EQ(jsonGetValueOrDefault<int>(json, "big", 7), 7);
    EXPECT_EQ(jsonGetValue<unsigned int>(json, "big"), 4294967295u);
    EXPECT_EQ(jsonGetValueOrDefault<long long>(json, "huge", 7), 7);
    EXPECT_EQ(jsonGetValue<unsigned long long>(json, "huge"), 9223372036854775808ull);
    EXPECT_EQ(jsonGetValueOrDefault<int>(json, "half", 7), 7);
}

TEST(JsonHelpers, WrongTypesAreSilentDefaultsOrErrors) {
    const Document json = Parsed(R"({"b":"true","n":null,"o":{},"a":[],"t":true,"x":1})");
    LogCapture log;
    EXPECT_TRUE(jsonGetValueOrDefault<bool>(json, "b", true));
    EXPECT_FALSE(jsonGetValueOrDefault<bool>(json, "b", false));
    EXPECT_EQ(jsonGetValueOrDefault<std::string>(json, "absent", "d"), "d");
    const auto complaint = [&](const char* key) {
        return ThrownText([&] { jsonGetValue<std::string>(json, key); });
    };
    EXPECT_EQ(complaint("n"), "Found key 'n', with unexpected type: Null");
    EXPECT_EQ(complaint("t"), "Found key 't', with unexpected type: Bool");
    EXPECT_EQ(complaint("o"), "Found key 'o', with unexpected type: Object");
    EXPECT_EQ(complaint("a"), "Found key 'a', with unexpected type: Array");
    EXPECT_EQ(complaint("x"), "Found key 'x', with unexpected type: Number");
    EXPECT_EQ(ThrownText([&] { jsonGetValue<int>(json, "b"); }),
              "Found key 'b', with unexpected type: String");
    EXPECT_TRUE(log.Lines().empty());
}

TEST(JsonHelpers, MissingMembersAndNoObjectAreLogged) {
    const Document json = Parsed(R"({"a":1})");
    const Document array = Parsed("[1]");
    LogCapture log;
    EXPECT_EQ(ThrownText([&] { jsonGetValue<int>(json, "key"); }), "Missing mandatory field key");
    EXPECT_TRUE(log.HasLine(1, "Missing mandatory field key"));
    log.Clear();
    EXPECT_EQ(jsonGetValueOrDefault<int>(array, "key", 3), 3);
    EXPECT_TRUE(log.HasLine(1, "Invalid object passed to JSONGetValueOrDefault. Desired key=key"));
    EXPECT_EQ(ThrownText([&] { JSONGetObject(array, "key"); }),
              "Invalid object passed to JSONGetValueOrDefault. Desired key=key");
}

TEST(JsonHelpers, KeysAreComparedByLengthAndTheFirstWins) {
    const Document json = Parsed(R"({"a\u0000b":1,"a":2,"a":3})");
    EXPECT_EQ(jsonGetValue<int>(json, "a"), 2);
    EXPECT_EQ(jsonGetValue<int>(json, std::string_view("a\0b", 3)), 1);
}

TEST(JsonHelpers, EnumWords) {
    const Document json = Parsed(R"({"a":"pear","b":"Pear","c":1})");
    EXPECT_EQ(jsonGetEnum(json, "a", kFruits), Fruit::kPear);
    EXPECT_EQ(jsonGetEnumOrDefault(json, "b", kFruits, Fruit::kApple), Fruit::kApple);
    EXPECT_EQ(jsonGetEnumOrDefault(json, "c", kFruits, Fruit::kApple), Fruit::kApple);
    EXPECT_EQ(ThrownText([&] { jsonGetEnum(json, "b", kFruits); }),
              "Found a string at key 'b' with value 'Pear', but cannot map that to an enum value");
    EXPECT_EQ(ThrownText([&] { jsonGetEnum(json, "c", kFruits); }),
              "Found key 'c', with unexpected type: Number");
}

TEST(JsonHelpers, ArraysAndObjectsOrEmpty) {
    const Document json = Parsed(R"({"a":[1,2],"o":{"x":1}})");
    LogCapture log;
    EXPECT_EQ(JSONGetArray(json, "a").Size(), 2u);
    EXPECT_EQ(JSONGetObjectOrEmpty(json, "o").MemberCount(), 1u);
    EXPECT_TRUE(JSONGetArrayOrEmpty(json, "absent").Empty());
    EXPECT_TRUE(log.Lines().empty());
    EXPECT_TRUE(JSONGetArrayOrEmpty(json, "o").IsArray());
    EXPECT_TRUE(log.HasLine(1, "Found object with key o, with unexpected type 3"));
    EXPECT_TRUE(JSONGetObjectOrEmpty(json, "a").IsObject());
    EXPECT_EQ(ThrownText([&] { JSONGetObject(json, "a"); }),
              "Found object with key a, with unexpected type 4");
}

TEST(JsonHelpers, StringsOfAnArray) {
    const Document json = Parsed(R"({"s":["a",1,"b"],"w":"\u00e9\ud83d\ude00"})");
    LogCapture log;
    EXPECT_TRUE(JSONGetStrings(json, "absent").empty());
    EXPECT_TRUE(log.Lines().empty());
    EXPECT_EQ(JSONGetStrings(json, "s"), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(log.Lines().size(), 1u);
    EXPECT_TRUE(log.HasLine(1, "Found non-string in array. Expected all strings in array s"));
    EXPECT_EQ(JSONGetStrW(json, "w"), L"\u00e9\U0001F600");
    EXPECT_EQ(JSONGetStrWOrDefault(json, "s", "d"), L"d");
}

TEST(JsonHelpers, TextAndKeys) {
    EXPECT_EQ(WriteJSONToString(Parsed("{ \"a\" : [ 1, true ] }")), R"({"a":[1,true]})");
    EXPECT_EQ(WriteJSONToKeys(Parsed(R"({"a":1,"b":{"c":2}})")), "{a,b{c}}");
    EXPECT_EQ(WriteJSONToKeys(Parsed(R"({"a":[{"x":1}],"e":{}})")), "{a,e{}}");
    EXPECT_EQ(WriteJSONToKeys(Parsed("{}")), "{}");
    EXPECT_EQ(WriteJSONToKeys(Parsed("[1]")), "");
}

TEST(JsonHelpers, ReadJsonTakesCommentsAndRefusesTheRest) {
    const TempFolder folder;
    LogCapture log;
    Document json;
    EXPECT_TRUE(ReadJSON(folder.Write("good.json", "// one\n{\"a\": /* two */ 1}"), json));
    EXPECT_EQ(jsonGetValue<int>(json, "a"), 1);
    EXPECT_FALSE(ReadJSON(folder / "absent.json", json));
    EXPECT_TRUE(log.Lines().empty());

    const std::string array = folder.Write("array.json", "[1]");
    EXPECT_FALSE(ReadJSON(array, json));
    EXPECT_TRUE(log.HasLine(1, "Document at " + array + " has no root object"));
    for (const std::string& text : {std::string("\xFF\xFE{\0}\0", 6), std::string("\xEF\xBB\xBF{}"),
                                    std::string(""), std::string("{}{}"), std::string("{\"a\":\"\xC3\"}")}) {
        log.Clear();
        const std::string path = folder.Write("bad.json", text);
        EXPECT_FALSE(ReadJSON(path, json));
        EXPECT_TRUE(log.HasLine(1, "Error parsing JSON document " + path));
    }
}

}  // namespace
}  // namespace KXP
