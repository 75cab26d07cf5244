// The parts of gallery-host that need no plug-in.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "gallery-host/base/Paths.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/commandline/TimeText.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/verbs/CleanPlan.h"
#include "gallery-host/verbs/Thumbnail.h"
#include "tests/support/TempFolder.h"

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

TEST(Paths, FollowLinksOnlyWhereTheyMust) {
    const TempFolder folder;
    folder.MakeFolder("real/sub");
    std::filesystem::create_directory_symlink(folder / "real/sub", folder / "link");
    std::filesystem::create_symlink("nowhere", folder / "real/file");
    EXPECT_EQ(host::AbsolutePath(folder / "link/./new.png"), folder / "link/new.png");
    EXPECT_EQ(host::AbsolutePath(folder / "link/../file"), folder / "real/file");
    EXPECT_EQ(host::AbsolutePath("x"), (std::filesystem::current_path() / "x").string());
}

TEST(Arguments, TimesAndSizes) {
    const std::pair<const char*, double> times[] = {
        {"0", 0}, {"1.5", 1500}, {"1:30", 90000}, {"1:02:03.5", 3723500}, {"100:00", 6000000}};
    for (const auto& [text, milliseconds] : times)
        EXPECT_EQ(host::ReadMilliseconds(text), milliseconds) << text;
    for (const char* wrong : {"", "-1", "1.", "1:60", "1:60:00", "1:2:3:4", "1e3", "1:1.5:00", "9999999999"})
        EXPECT_FALSE(host::ReadMilliseconds(wrong)) << wrong;
    EXPECT_TRUE(host::ReadThumbSize("64x36"));
    for (const char* wrong :
         {"", "320", "x180", "320x", "320x180x", "0x1", "1x-1", "16385x1", "9999999999x1"})
        EXPECT_FALSE(host::ReadThumbSize(wrong)) << wrong;
}

TEST(Clean, TakesTheOldestFirstAndWhatPeopleMadeLast) {
    const KXP::Document answer = Parsed(R"({"recents":[
        {"path":"/g/A/new.png","date":"2026-03-14T18:06:09Z","fileSizeKB":10},
        {"path":"/g/A/old.png","date":"2025-01-01T00:00:00Z","fileSizeKB":10},
        {"path":"/g/B/older.mp4","date":"2024-01-01T00:00:00Z","fileSizeKB":10},
        {"path":"/g/B/oldest.mp4","date":"2023-01-01T00:00:00Z","fileSizeKB":10,"memeInfo":{"bottomBarText":"x"}},
        {"path":"/g/A/finish.png","date":"2022-01-01T00:00:00Z","fileSizeKB":10,"fileSubType":"Highlight"},
        {"path":"/g/A/announced.png","fileSubType":"Normal","fileSizeKB":10}]})");
    const auto plan = [&](const host::CleanRule& rule) {
        const host::CleanPlan made = host::PlanCleaning(host::Elements(answer, "recents"), 50, rule);
        std::string names;
        for (const KXP::Value* capture : made.captures)
            names += host::Text(*capture, "path").substr(5) + " ";
        const auto number = [](double value) { return std::to_string(static_cast<int>(value)); };
        return names + "frees " + number(made.freedKB) + " lacks " + number(made.missingKB) + " spares " +
               std::to_string(made.spared);
    };
    EXPECT_EQ(plan({50.0, "", "", true}), "frees 0 lacks 0 spares 0");
    EXPECT_EQ(plan({35.0, "", "", false}), "older.mp4 old.png frees 20 lacks 0 spares 0");
    EXPECT_EQ(plan({5.0, "", "", false}), "older.mp4 old.png new.png frees 30 lacks 15 spares 2");
    EXPECT_EQ(plan({5.0, "", "", true}),
              "older.mp4 old.png new.png finish.png oldest.mp4 frees 50 lacks 0 spares 0");
    EXPECT_EQ(plan({{}, "2025-01-01T00:00:00Z", "", false}), "older.mp4 frees 10 lacks 0 spares 2");
    EXPECT_EQ(plan({{}, "2025-01-01T00:00:01Z", "/g/A/", true}),
              "old.png finish.png frees 20 lacks 0 spares 0");
}

}  // namespace
