// The parts of gallery-host that need no plug-in.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "gallery-host/Envelope.h"
#include "gallery-host/LineSplitter.h"
#include "gallery-host/ListTable.h"
#include "gallery-host/Printable.h"

namespace {

KXP::Document Parsed(const std::string& text) {
    KXP::Document document;
    std::string error;
    EXPECT_TRUE(host::ParseObject(text, document, error)) << error;
    return document;
}

TEST(Printable, LeavesNothingThatSteersATerminal) {
    EXPECT_EQ(host::Printable("Drachenk\u00fcste \u738b \U0001F3AE"), "Drachenk\u00fcste \u738b \U0001F3AE");
    EXPECT_EQ(host::Printable("a\x1b[31mb\r\n\t\x7f"), "a\\x1b[31mb\\x0d\\x0a\\x09\\x7f");
    EXPECT_EQ(host::Printable("\u009b31m"), "\\x9b31m");
    EXPECT_EQ(host::Printable("gnp.\u202egpj"), "gnp.\\u202egpj");
    // Stray, overlong, cut short, surrogate, beyond the last character.
    EXPECT_EQ(host::Printable("\xff|\xc0\x9b|\xe2\x82|\xed\xa0\x80|\xf4\x90\x80\x80"),
              "\\xff|\\xc0\\x9b|\\xe2\\x82|\\xed\\xa0\\x80|\\xf4\\x90\\x80\\x80");
}

TEST(Printable, JsonKeepsItsMeaning) {
    const std::string json = "{\n  \"a\": \"\u202e\u009b\x7f\U000E0041 \u00fc\"\n}";
    const std::string printable = host::PrintableJson(json);
    EXPECT_EQ(printable, "{\n  \"a\": \"\\u202e\\u009b\\u007f\\udb40\\udc41 \u00fc\"\n}");
    EXPECT_EQ(host::ToText(Parsed(printable)), host::ToText(Parsed(json)));
}

TEST(ListTable, AlignsWideNames) {
    const KXP::Document payload = Parsed(
        "{\"directories\":[\"\u738b\u5bb6\"],\"files\":["
        "{\"name\":\"e\u0301a.png\",\"type\":\"image\",\"subtype\":\"360Stereo\",\"source\":\"OVS_Lumis\"},"
        "{\"name\":\"x\\u001b[2J\",\"type\":\"?\",\"subtype\":\"\",\"source\":\"Undefined\"},"
        "{\"name\":7,\"type\":[]},5],\"other\":1}");
    EXPECT_EQ(host::ListTable(payload, false),
              "NAME      KIND    DETAILS       SOURCE\n"
              "\u738b\u5bb6/     folder\n"
              "e\u0301a.png    image   360\u00b0, stereo  LUMIS\n"
              "x\\x1b[2J  ?                     -\n"
              "\n\n");
    EXPECT_EQ(host::ListSummary(payload), "1 folder, 4 files");
}

TEST(ListTable, ColoursOnlyWhenAsked) {
    const KXP::Document payload = Parsed(R"({"directories":["a"]})");
    EXPECT_EQ(host::ListTable(payload, true),
              "\x1b[1mNAME\x1b[0m  KIND    DETAILS  SOURCE\n\x1b[1;34ma/\x1b[0m    folder\n");
    EXPECT_EQ(host::ListTable(payload, false).find('\x1b'), std::string::npos);
    EXPECT_EQ(host::ListTable(Parsed(R"({"files":{},"directories":3})"), true), "");
    EXPECT_EQ(host::ListSummary(Parsed("{}")), "no folders, no files");
}

TEST(Envelope, CompletesOnlyWhatIsMissing) {
    KXP::Document bare = Parsed(R"({"method":"M"})");
    host::Complete(bare);
    EXPECT_EQ(host::Text(bare, "system"), "CobalixNative");
    EXPECT_EQ(host::Text(bare, "module"), "Gallery");
    EXPECT_EQ(host::Text(bare, "source_system"), "Host");
    EXPECT_EQ(host::Text(bare, "uniqueid").size(), 36u);
    EXPECT_TRUE(bare["payload"].IsObject());
    EXPECT_FALSE(host::IsPersistent(bare));
    KXP::Document wrong = Parsed(
        R"({"system":5,"module":"X","method":"M","uniqueid":"u","source_system":"","source_module":"s",)"
        R"("payload":[],"type":3073})");
    const std::string before = host::ToText(wrong);
    host::Complete(wrong);
    EXPECT_EQ(host::ToText(wrong), before);
    EXPECT_TRUE(host::IsPersistent(wrong));
    EXPECT_NE(host::NewUniqueId(), host::NewUniqueId());
}

TEST(Envelope, ReadsResultsOfAnyType) {
    EXPECT_EQ(host::ResultText(Parsed(R"({"payload":{"_return_code":-2147024809,"_return_status":"no"}})")),
              "0x80070057: no");
    EXPECT_LT(host::ResultCode(Parsed(R"({"payload":{"_return_code":2147942487}})")), 0);
    EXPECT_EQ(host::ResultCode(Parsed(R"({"payload":{"_return_code":"-1"}})")), 0);
    EXPECT_EQ(host::ResultCode(Parsed(R"({"payload":[]})")), 0);
    EXPECT_FALSE(host::IsResponse(Parsed(R"({"reference_uniqueid":""})")));
}

TEST(LineSplitter, KeepsLinesWholeAndBounded) {
    std::vector<std::string> lines;
    host::LineSplitter splitter(5, [&lines](const host::LineSplitter::Line& line) {
        lines.push_back(std::to_string(line.number) + (line.tooLong ? "!" : ":") + line.text);
    });
    for (const char* part : {"a", "bc\n\n1234", "5\n123", "456", "78\nx", "yz"})
        splitter.Feed(part);
    EXPECT_EQ(lines, (std::vector<std::string>{"1:abc", "2:", "3:12345", "4!"}));
    splitter.Finish();
    EXPECT_EQ(lines.back(), "5:xyz");
    splitter.Finish();
    EXPECT_EQ(lines.size(), 5u);
}

}  // namespace
