#include <atomic>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/json/JSONFile.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace {
std::atomic<bool> stopped{false};
int stopsAfterWrites = 0;
}  // namespace

// Found before that of the C library, which it calls.
ssize_t pwrite(int file, const void* bytes, size_t size, off_t offset) {
    const auto real =
        reinterpret_cast<ssize_t (*)(int, const void*, size_t, off_t)>(dlsym(RTLD_NEXT, "pwrite"));
    const ssize_t put = real(file, bytes, size, offset);
    if (stopsAfterWrites > 0 && --stopsAfterWrites == 0) stopped = true;
    return put;
}

namespace KXP {
namespace {

class JSONFileTest : public testing::Test {
  protected:
    JSONFileTest() { file_.Init(folder_ / "f.json"); }

    RetVal Read(const std::string& bytes, Document& json) {
        folder_.Write("f.json", bytes);
        return file_.ReadAndParseJSON(json);
    }

    RetVal Write(const std::string& text) {
        Document json;
        EXPECT_FALSE(ParseJSON(text, json).IsError());
        return file_.WriteJSON(json);
    }

    // The text of the member "a" in a file of these bytes.
    std::string ValueIn(const std::string& bytes) {
        Document json;
        return Read(bytes, json).Failed() ? "unreadable" : jsonGetValue<std::string>(json, "a");
    }

    TempFolder folder_;
    LogCapture log_;
    JSONFile file_;
};

TEST_F(JSONFileTest, ReadsEveryEncodingUpToAZeroByte) {
    for (const std::string& text :
         {std::string("\xEF\xBB\xBF/* note */{\"a\":5}"), std::string("{\"a\":5}\0\"x\"", 11),
          std::string("\xFF\xFE{\0\"\0a\0\"\0:\0005\0}\0", 16), std::string("\0{\0\"\0a\0\"\0:\0005\0}", 14),
          std::string("\0\0\0{\0\0\0\"\0\0\0a\0\0\0\"\0\0\0:\0\0\0005\0\0\0}", 28)}) {
        Document json;
        ASSERT_EQ(Read(text, json).code, 0) << testing::PrintToString(text);
        EXPECT_EQ(jsonGetValue<int>(json, "a"), 5);
    }
}

TEST_F(JSONFileTest, ShortOddAndMalformedFilesAreErrors) {
    Document json;
    std::vector<std::string> texts = {
        "{}{}", std::string(3, '\0'), std::string(4, '\0'), std::string("\xFF\xFE\x00\xD8}\0", 6),
        // Before so many that are none of ours, a text is not looked for.
        "{}  " + std::string("\0x\0x\0x\0x\0x\0x\0x\0x\0x\0x\0x\0x\0x\0x\0x\0x", 32)};
    for (size_t length = 0; length < 14; ++length)
        texts.push_back(std::string("\xFF\xFE{\0\"\0a\0\"\0:\0005\0", length));
    for (const std::string& text : texts)
        EXPECT_EQ(ToStr(Read(text, json)), "0x8008f001[0]: Error parsing JSON document") << text.size();
    EXPECT_EQ(ToStr(Read("[1]", json)), "0x8007000d[0]: Document has no root object");
}

TEST_F(JSONFileTest, WhatIsNoFileIsReportedAndNotWaitedFor) {
    Document json;
    ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    for (const char* name : {"pipe", ".", "no/such.json"}) {
        file_.Init(folder_ / name);
        EXPECT_EQ(ToStr(file_.ReadAndParseJSON(json)), "0x80070002[0]: Config file not found") << name;
        EXPECT_EQ(ToStr(Write("{}")), "0x80070002[0]: Failed to open file") << name;
        EXPECT_FALSE(ReadJSON(folder_ / name, json));
    }
    // One that is too large is replaced.
    file_.Init(folder_.Write("f.json", "{}"));
    std::filesystem::resize_file(folder_ / "f.json", kMaxJsonFileBytes + 1);
    HeldLog log;
    EXPECT_EQ(file_.ReadAndParseJSON(json).code, Code::kJsonField);
    EXPECT_EQ(file_.ReadUnlessPassing(json, log).code, Code::kJsonField);
    EXPECT_EQ(Write("{}").code, 0);
}

TEST_F(JSONFileTest, OldTextSurvivesAFullDisk) {
    ASSERT_EQ(Write("{\"old\":1}").code, 0);
    const std::string old = folder_.Read("f.json");
    Document large;
    large.SetObject();
    large.AddMember("text", Value(std::string(1 << 20, 'x'), large.GetAllocator()), large.GetAllocator());

    const RetVal result = [&] {
        const FileSizeLimit fullDisk(1 << 16);
        return file_.WriteJSON(large);
    }();
    EXPECT_EQ(static_cast<uint32_t>(result.code), 0x80004005u);
    EXPECT_EQ(log_.Count("][1]["), 1);
    EXPECT_EQ(folder_.Read("f.json"), old);
}

TEST_F(JSONFileTest, AStoppedWriteLeavesTheOldTextOrTheNew) {
    const std::string zeros(100, '\0');
    const std::string oldText = "{\"a\":\"old\"}";
    const std::string newText = "{\"a\":\"new\"}";
    const auto copy = [&](size_t written) {
        return newText.substr(0, written) + oldText.substr(written) + '\0' + newText;
    };
    const auto cutOff = [&](size_t written) { return oldText + zeros + newText.substr(0, written) + zeros; };
    for (size_t written = 0; written < newText.size(); ++written) {
        EXPECT_EQ(ValueIn(cutOff(written)), "old") << written;
        const std::string copied = copy(written);
        EXPECT_EQ(ValueIn(copied), "new") << written;
        // And stopped again while the next text was written after these.
        EXPECT_EQ(ValueIn(copied + std::string("\0{\"a\":\"ne", 9)), "new") << written;
    }
}

TEST_F(JSONFileTest, AWriteThatIsToldToStopLeavesAWholeText) {
    file_.StopWritesOnce(stopped);
    ASSERT_EQ(Write(R"({"a":"old"})").code, 0);
    const std::string old = folder_.Read("f.json");
    stopsAfterWrites = 1;
    EXPECT_TRUE(Write(R"({"a":"new"})").Failed());
    const std::string copied = folder_.Read("f.json");
    EXPECT_EQ(copied.substr(0, old.size()), old) << "nothing was written over";
    EXPECT_EQ(ValueIn(copied), "new") << "it is there twice";
    // What begins after that was decided by somebody who knew.
    ASSERT_EQ(Write(R"({"a":"newer"})").code, 0);
    EXPECT_EQ(ValueIn(folder_.Read("f.json")), "newer");
    stopped = false;
}

TEST_F(JSONFileTest, AStoppedTailLeavesTheOldTextOrTheNew) {
    const std::string oldText = R"({"k":1,"a":"old"})";
    const std::string tail = R"(,"a":"longer"})";
    constexpr size_t kKeep = 6;
    const std::string place = oldText + std::string(kKeep + tail.size() - oldText.size(), '\0');
    const std::string second = '\0' + std::string("@6 14\n") + tail;
    for (size_t written = 0; written < second.size(); ++written) {
        const std::string reserved = second.substr(0, written) + std::string(second.size() - written, '\0');
        EXPECT_EQ(ValueIn(place + reserved), "old") << written;
    }
    for (size_t written = 0; written <= tail.size(); ++written) {
        const std::string front =
            place.substr(0, kKeep) + tail.substr(0, written) + place.substr(kKeep + written);
        EXPECT_EQ(ValueIn(front + second), "longer") << written;
        // And stopped again while a whole text was written after these.
        EXPECT_EQ(ValueIn(front + second + std::string("\0{\"a\":\"ne", 9)), "longer") << written;
    }
    const auto withHead = [&](const char* head) { return place + '\0' + head + tail; };
    for (const char* head :
         {"@60 14\n", "@7 14\n", "@18446744073709551615 14\n", "@-6 14\n", "@6\n", "@6 13\n"})
        EXPECT_EQ(ValueIn(withHead(head)), "old") << head;
    HeldLog log;
    EXPECT_EQ(file_.WriteTail(1000, "}", log).code, static_cast<int32_t>(0x80004005));
    EXPECT_EQ(folder_.Read("f.json"), place + '\0' + "@6 13\n" + tail);
}

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
        {"[1e-123456789]", rapidjson::kParseErrorNone},
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
    for (const char* unfinished : {"", "\"\\", "\"\\u12", "/*", "[1e", "{\"\\uDC00\":1}"})
        EXPECT_NE(Parse(unfinished), rapidjson::kParseErrorNone) << unfinished;
    EXPECT_THROW(Value(1).GetString(), Exception) << "a value used as what it is not";
}

}  // namespace
}  // namespace KXP
