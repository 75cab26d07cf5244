// The parts of gallery-host that need no plug-in.
#include <ctime>
#include <string>

#include <gtest/gtest.h>

#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/GalleryTable.h"
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

}  // namespace
