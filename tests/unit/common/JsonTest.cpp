#include <atomic>
#include <functional>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include "common/json/JSONFile.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace {
std::function<void()> afterWrite;
}

// Found before that of the C library, which it calls: also for some beginnings of the bytes, as a kill may
// cut a write.
ssize_t pwrite(int file, const void* bytes, size_t size, off_t offset) {
    const auto real =
        reinterpret_cast<ssize_t (*)(int, const void*, size_t, off_t)>(dlsym(RTLD_NEXT, "pwrite"));
    for (size_t cut = 1; afterWrite && cut < size; cut += size / 16 + 1) {
        EXPECT_EQ(real(file, bytes, cut, offset), static_cast<ssize_t>(cut));
        afterWrite();
    }
    const ssize_t put = real(file, bytes, size, offset);
    if (afterWrite) afterWrite();
    return put;
}

ssize_t pwritev(int file, const iovec* parts, int count, off_t offset) {
    std::string bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(static_cast<const char*>(parts[i].iov_base), parts[i].iov_len);
    return pwrite(file, bytes.data(), bytes.size(), offset);
}

namespace KXP {
namespace {

class JSONFileTest : public testing::Test {
  protected:
    JSONFileTest() { file_.Init(folder_ / "f.json"); }
    ~JSONFileTest() override { afterWrite = nullptr; }

    RetVal Read(const std::string& bytes, Document& json) {
        folder_.Write("f.json", bytes);
        return file_.ReadAndParseJSON(json);
    }

    RetVal Write(const std::string& text) {
        Document json;
        EXPECT_FALSE(ParseJSON(text, json).IsError());
        return file_.WriteJSON(json);
    }

    // The text of the member "a" in the file, or in a file of these bytes.
    std::string Found() {
        Document json;
        return file_.ReadAndParseJSON(json).Failed() ? "none" : jsonGetValue<std::string>(json, "a");
    }
    std::string ValueIn(const std::string& bytes) {
        folder_.Write("f.json", bytes);
        return Found();
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

TEST_F(JSONFileTest, AWriteThatIsToldToStopLeavesAWholeText) {
    std::atomic<bool> stopped{false};
    file_.StopWritesOnce(stopped);
    ASSERT_EQ(Write(R"({"a":"old"})").code, 0);
    const std::string old = folder_.Read("f.json");
    afterWrite = [&] { stopped = true; };
    EXPECT_TRUE(Write(R"({"a":"new"})").Failed());
    EXPECT_EQ(folder_.Read("f.json").substr(0, old.size()), old) << "nothing was written over";
    EXPECT_EQ(Found(), "new") << "it is there twice";
    // What begins after that was decided by somebody who knew.
    ASSERT_EQ(Write(R"({"a":"newer"})").code, 0);
    EXPECT_EQ(Found(), "newer");
}

TEST_F(JSONFileTest, HasTheOldTextOrTheNewWhereverAWriteEnds) {
    std::vector<std::string> found = {"old"};
    afterWrite = [&] {
        if (found.back() != Found()) found.push_back(Found());
    };
    folder_.Write("f.json", R"({"a":"old"})" + std::string(150000, ' '));
    ASSERT_EQ(Write(R"({"a":"new"})").code, 0);
    for (const char* tail : {R"("longer"})", R"("s"})"}) {
        HeldLog log;
        ASSERT_EQ(file_.WriteTail(8, tail, log).code, 0);
        EXPECT_EQ(folder_.Read("f.json"), std::string("{\n\t\"a\": ") + tail);
    }
    EXPECT_EQ(found, (std::vector<std::string>{"old", "new", "longer", "s"}));
    EXPECT_EQ(ValueIn(std::string("{\"a\":\"n\"old\"}\0{\"a\":\"new\"}\0{\"a\":\"ne", 34)), "new")
        << "ended twice";
}

TEST_F(JSONFileTest, ATailThatBelongsNowhereIsPassedOver) {
    const std::string place = R"({"k":1,"a":"old"})" + std::string(4, '\0') + "@";
    for (const char* head : {"60 14\n", "7 14\n", "18446744073709551615 14\n", "-6 14\n", "6\n", "6 13\n"})
        EXPECT_EQ(ValueIn(place + head + R"(,"a":"longer"})"), "old") << head;
    EXPECT_EQ(ValueIn(place + "6 14\n" + R"(,"a":"longer"})"), "longer");
    HeldLog log;
    EXPECT_EQ(file_.WriteTail(1000, "}", log).code, static_cast<int32_t>(0x80004005));
    EXPECT_EQ(Found(), "longer");
}

rapidjson::ParseResult Parse(const std::string& text) {
    // Memory of its own exact size, so that a sanitizer sees a read past the end.
    const std::vector<char> bytes(text.begin(), text.end());
    Document document;
    return ParseJSON({bytes.data(), bytes.size()}, document);
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
        {"[-1e308]", rapidjson::kParseErrorNone},
        {"[1e309]", rapidjson::kParseErrorNumberTooBig},
        {"{\"a\":-3073E307}", rapidjson::kParseErrorNumberTooBig},  // by its exponent it is small enough
    };
    for (const auto& [text, code] : cases)
        EXPECT_EQ(Parse(text).Code(), code) << text.substr(0, 40);
    // Wherever in the blocks that are searched the exponent stands, and whatever stands around it.
    for (size_t shift = 0; shift < 140; ++shift) {
        const std::string text =
            "[\"\\\\\"," + std::string(shift, ' ') + "7E-1234567890" + Times(40, ",1e1") + "]";
        EXPECT_EQ(Parse(text).Code(), rapidjson::kParseErrorTermination) << shift;
        EXPECT_EQ(Parse(text).Offset(), shift + 7);
    }
    for (const char* unfinished : {"", "\"\\", "\"\\u12", "/*", "[1e", "{\"\\uDC00\":1}"})
        EXPECT_TRUE(Parse(unfinished).IsError()) << unfinished;
    EXPECT_THROW(Value(1).GetString(), Exception) << "a value used as what it is not";
}

// Against the library's own writer, which goes by the character.
TEST(JsonWriter, EscapesEachCharacterWhereverItStands) {
    for (size_t length = 1; length <= 20; ++length) {
        for (size_t at = 0; at < length; ++at) {
            for (int c = 0; c < 256; ++c) {
                std::string text(length, 'a');
                text[at] = static_cast<char>(c);
                const auto size = static_cast<rapidjson::SizeType>(length);
                JsonBuffer written;
                JsonWriter(written).String(text.data(), size);
                rapidjson::StringBuffer expected;
                rapidjson::Writer<rapidjson::StringBuffer>(expected).String(text.data(), size);
                ASSERT_STREQ(written.GetString(), expected.GetString()) << c << " at " << at;
            }
        }
    }
}

}  // namespace
}  // namespace KXP
