// The parts of gallery-host that need no plug-in.
#include <string>

#include <gtest/gtest.h>

#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/GalleryTable.h"

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

TEST(GalleryTable, NewestFirstWhateverTheMembersAre) {
    const KXP::Document gallery = Parsed(
        R"({"games":[{"name":"Race\u001b[2J","ugc":[)"
        R"({"path":"/g/Race/a.png","fileType":"image","fileSizeKB":12,"date":"2026-03-14T18:00:00Z"},)"
        R"({"path":"/g/Race/late.mp4","fileType":"video","fileSizeKB":2400,"date":"2026-03-14T23:00:00Z"},)"
        R"({"path":"/g/Race/unsaved.png","fileType":"image","fileSizeKB":0,"date":""}]},)"
        R"({"name":"Empty","ugc":[]},{"name":5},7,)"
        R"({"name":"Odd","ugc":[{"path":[],"fileType":"other","fileSizeKB":-1,"date":"yesterday"},3]}]})");
    const std::string table = host::GalleryTable(gallery, false);
    size_t at = 0;
    for (const char* next :
         {"Race\\x1b[2J: 1 video, 2 images\n", "unsaved.png", "late.mp4", "a.png", "\n\nOdd: "}) {
        at = table.find(next, at);
        ASSERT_NE(at, std::string::npos) << next << table;
    }
    EXPECT_EQ(host::GallerySummary(gallery), "2 games, 5 captures, 2.4 MB");
    EXPECT_EQ(host::GalleryTable(Parsed(R"({"games":{}})"), true), "");
}

}  // namespace
