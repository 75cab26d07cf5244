// The parts of gallery-host that need no plug-in.
#include <ctime>
#include <string>

#include <gtest/gtest.h>

#include "gallery-host/Envelope.h"
#include "gallery-host/GalleryTable.h"
#include "gallery-host/ListTable.h"
#include "gallery-host/Printable.h"
#include "tests/host/HostRun.h"
#include "tests/support/ScopedEnv.h"

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

TEST(ListTable, TakesNoOtherShape) {
    EXPECT_EQ(host::ListTable(Parsed(R"({"files":{},"directories":3})"), true), "");
    EXPECT_EQ(host::ListSummary(Parsed("{}")), "no folders, no files");
}

TEST(GalleryTable, NewestFirstInColumnsOfAllGames) {
    const ScopedEnv zone("TZ", "UTC-2");
    tzset();
    const KXP::Document gallery = Parsed(
        R"({"games":[{"name":"Race\u001b[2J","ugc":[)"
        R"({"path":"/g/Race/a.png","fileType":"image","fileSizeKB":12,"date":"2026-03-14T18:00:00Z","duration":""},)"
        R"({"path":"/g/Race/long name.mp4","fileType":"video","fileSubType":"InstantReplay","fileSizeKB":2400,)"
        R"("date":"2026-03-14T23:00:00Z","duration":"00:01:15"},)"
        R"({"path":"/g/Race/b.png","fileType":"image","fileSubType":"Highlight","fileSizeKB":0,"date":""}]},)"
        R"({"name":"Empty","ugc":[]},{"name":5},7,)"
        R"({"name":"Odd","ugc":[{"path":[],"fileType":"other","fileSizeKB":-1,"date":"yesterday"},3]}]})");
    EXPECT_EQ(host::GalleryTable(gallery, false),
              "Race\\x1b[2J: 1 video, 2 images\n"
              "  b.png          image       highlight                         not saved yet\n"
              "  long name.mp4  video       instant replay  2.4 MB  00:01:15  2026-03-15 01:00\n"
              "  a.png          image       screenshot       12 kB            2026-03-14 20:00\n"
              "\n"
              "Odd: 2 other files\n"
              "                                                               not saved yet\n"
              "                 other file                    0 kB            yesterday\n");
    EXPECT_EQ(host::GallerySummary(gallery), "2 games, 5 captures, 2.4 MB");
    EXPECT_TRUE(Contains(host::GalleryTable(gallery, true), "\x1b[1mOdd\x1b[0m: 2"));
    EXPECT_EQ(host::GalleryTable(Parsed(R"({"games":{}})"), true), "");
}

TEST(Envelope, CompletesOnlyWhatIsMissing) {
    KXP::Document bare = Parsed(R"({"method":"M"})");
    host::Complete(bare);
    EXPECT_EQ(host::Text(bare, "system"), "CobalixNative");
    EXPECT_EQ(host::Text(bare, "uniqueid").size(), 36u);
    EXPECT_TRUE(bare["payload"].IsObject());
    KXP::Document wrong = Parsed(
        R"({"system":5,"module":"X","method":"M","uniqueid":"u","source_system":"","source_module":"s",)"
        R"("payload":[],"type":3073})");
    const std::string before = host::ToText(wrong);
    host::Complete(wrong);
    EXPECT_EQ(host::ToText(wrong), before);
    EXPECT_TRUE(host::IsPersistent(wrong));
}

TEST(Envelope, ReadsResultsOfAnyType) {
    EXPECT_EQ(host::ResultText(Parsed(R"({"payload":{"_return_code":-2147024809,"_return_status":"no"}})")),
              "0x80070057: no");
    EXPECT_LT(host::ResultCode(Parsed(R"({"payload":{"_return_code":2147942487}})")), 0);
    EXPECT_EQ(host::ResultCode(Parsed(R"({"payload":{"_return_code":"-1"}})")), 0);
    EXPECT_EQ(host::ResultCode(Parsed(R"({"payload":[]})")), 0);
}

}  // namespace
