// What a user sees of gallery-host: the verbs, their messages and their exit statuses.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/host/HostRun.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TempGallery.h"

namespace {

TEST(CommandLine, UsageErrorsAreTwo) {
    const std::vector<std::vector<std::string>> wrong = {{},
                                                         {"frobnicate"},
                                                         {"call", ""},
                                                         {"-d", "nonsense", "serve"},
                                                         {"--timeout", "0", "serve"},
                                                         {"list", ".", "--exclude", "some"},
                                                         {"list", "--exr"},
                                                         {"watch", "--count", "0"},
                                                         {"recent", "--count", "0"},
                                                         {"stats", ""},
                                                         {"cp", "a"},
                                                         {"rm"},
                                                         {"thumb", "a"},
                                                         {"thumb", "a", "-o", "b", "--size", "320x"},
                                                         {"thumb", "a", "-o", "-", "--json"},
                                                         {"settings", "set"},
                                                         {"settings", "set", "--cap-percent", "101"},
                                                         {"trim", "a"},
                                                         {"trim", "a", "--to", "2", "--length", "1"},
                                                         {"trim", "a", "--from", "2", "--to", "2"},
                                                         {"trim", "a", "--length", "1:60"},
                                                         {"meme", "a"},
                                                         {"meme", "a", "--clear", "--top", "x"},
                                                         {"engrave", "a", "--cms-id", "x"},
                                                         {"montage", "recipe.js", "-o", "x.mp4"},
                                                         {"montage", "", "a.mp4", "-o", "x.mp4"},
                                                         {"call", "Echo", "[1]"},
                                                         {"call", "Echo", "@/"}};
    for (const auto& arguments : wrong) {
        const Ended ended = RunHost(arguments);
        EXPECT_EQ(ended.status, 2) << testing::PrintToString(arguments) << ended.err;
        EXPECT_EQ(ended.out, "");
        EXPECT_NE(ended.err, "");
    }
    EXPECT_TRUE(Contains(RunHost({"call", "Echo", "{\"a\":"}).err, "PAYLOAD is not JSON at byte 5"));
    EXPECT_TRUE(Contains(RunHost({"call", "Echo", "@/nowhere/p"}).err, "/nowhere/p: No such file"));
}

TEST(CommandLine, HelpVersionAndModesNeedNoPlugin) {
    EXPECT_TRUE(Contains(RunHost({"--help"}, {}, "old").out, "gallery-host call GetFolderListing"));
    EXPECT_TRUE(Contains(RunHost({"--version"}, {}, "old").out, "gallery-host 1."));
    const Ended modes = RunHost({"-d", "list"}, {}, "old");
    EXPECT_EQ(modes.status, 0);
    EXPECT_TRUE(Contains(modes.out, "keep-temp"));
}

TEST(CommandLine, CallPrintsThePayload) {
    const Ended plain = RunHost({"call", "Echo", R"({"a":1})"});
    EXPECT_EQ(plain.status, 0) << plain.err;
    EXPECT_EQ(plain.out, "{\n  \"a\": 1,\n  \"_return_code\": 0,\n  \"_return_status\": \"Success\"\n}\n");
    EXPECT_EQ(plain.err, "");
    const Ended raw = RunHost({"call", "--raw", "Echo", "-"}, "{\"b\":\"\u202e\"}\n");
    EXPECT_TRUE(Contains(raw.out, R"("payload":{"b":"\u202e",)")) << raw.out;
    EXPECT_EQ(raw.out.find('\n'), raw.out.size() - 1);
    const TempFolder folder;
    const std::string file = folder.Write("p.json", R"({"c":[]})");
    EXPECT_TRUE(Contains(RunHost({"call", "Echo", "@" + file}).out, "\"c\": []"));
}

TEST(CommandLine, AFailedRequestIsOne) {
    const Ended ended = RunHost({"call", "Fail"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.err, "gallery-host: 0x80070057: Bad \\x1b[31margument\n");
    EXPECT_TRUE(Contains(ended.out, "-2147024809"));
}

TEST(CommandLine, LogLinesAreShownOnRequestAndTamed) {
    EXPECT_EQ(RunHost({"call", "Log"}).err, "");
    const std::string shown = RunHost({"call", "Log", "-v"}).err;
    EXPECT_TRUE(Contains(shown, "a line with \\x1b[31mcolour\n")) << shown;
    const std::string traced = RunHost({"-d", "trace", "call", "Echo", R"({"q":1})"}).err;
    EXPECT_TRUE(Contains(traced, "-> {\"method\":\"Echo\"")) << traced;
    EXPECT_TRUE(Contains(traced, "<- {\"system\":\"Host\"")) << traced;
}

TEST(CommandLine, DebuggingModesShowTheirOwnLinesOnly) {
    EXPECT_EQ(RunHost({"-d", "watcher", "call", "Log"}).err,
              "[now][4][Gallery FILE] Watch.cpp:1 seen at level 4\n");
    const std::string timers = RunHost({"-d", "timers", "call", "Echo"}).err;
    size_t at = 0;
    for (const char* timed : {" ms  load\n", " ms  start\n", " ms  Echo\n", " ms  stop\n"}) {
        at = timers.find(timed, at);
        EXPECT_NE(at, std::string::npos) << timed << timers;
    }
}

TEST(CommandLine, ListsAFolder) {
    const TempFolder folder;
    const Ended plain = RunHost({"list", folder.path()});
    EXPECT_EQ(plain.status, 0) << plain.err;
    EXPECT_TRUE(Contains(plain.out, "\nSome Game/ ")) << plain.out;
    EXPECT_TRUE(Contains(plain.out, "\nbad\\x1b]0;name\\x07.mp4  video")) << plain.out;
    const Ended traced =
        RunHost({"list", folder.path() + "/.", "--only-own", "--exclude", "empty", "--exr", "-d", "trace"});
    EXPECT_TRUE(Contains(traced.err, R"({"directory":")" + folder.path() +
                                         R"(/","shouldGetOnlyZv":true,"excludeDirectoryType":"empty",)"
                                         R"("shouldShowEXR":true})"))
        << traced.err;
}

TEST(CommandLine, ListsTheGalleryOnceItIsComplete) {
    const TempGallery gallery;
    const auto list = [](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "list");
        ChildProcess child(arguments, {});
        const int status = child.Wait();
        return Ended{status, child.out, child.err};
    };
    const Ended empty = list({});
    EXPECT_EQ(empty.status, 0) << empty.err;
    EXPECT_EQ(empty.out, "");
    EXPECT_TRUE(Contains(empty.err, "gallery-host: no captures so far in " + gallery.path())) << empty.err;

    gallery.AddImage("Some Game/a.png");
    gallery.AddHighlight("Some Game/b.mp4");
    const Ended table = list({});
    EXPECT_EQ(table.out.find("Some Game: 1 video, 1 image\n  "), 0u) << table.out;
    EXPECT_TRUE(Contains(table.out, "  b.mp4  video  highlight  1 kB  00:00:02  2")) << table.out;
    EXPECT_TRUE(Contains(table.err, "gallery-host: 1 game, 2 captures, 2 kB in " + gallery.path()));
    const Ended json = list({"--json"});
    EXPECT_TRUE(Contains(json.out, "{\n  \"games\": [\n    {\n      \"name\": \"Some Game\"")) << json.out;

    const Ended busy = RunHost({"list", "--timeout", "0.2"}, {}, "rebuilds");
    EXPECT_EQ(busy.status, 4);
    EXPECT_EQ(busy.out, "");
    EXPECT_TRUE(Contains(busy.err, "the gallery is being scanned; waiting")) << busy.err;
    EXPECT_TRUE(Contains(busy.err, "the scan of the gallery did not end within")) << busy.err;
}

TEST(CommandLine, ListRefusesWhatIsNoFolder) {
    const Ended missing = RunHost({"list", "/nowhere/at all"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "gallery-host: /nowhere/at all: No such file or directory\n");
    EXPECT_TRUE(Contains(RunHost({"list", GALLERY_HOST}).err, "not a folder"));
}

TEST(CommandLine, ColoursOnATerminalUnlessTheUserObjects) {
    const TempFolder folder;
    for (const bool objects : {false, true}) {
        ChildProcess child(WithFake({"list", folder.path()}),
                           {{"TERM=xterm", objects ? "NO_COLOR=1" : "NO_COLOR="}, true});
        EXPECT_EQ(child.Wait(), 0) << child.err;
        EXPECT_EQ(Contains(child.out, "\x1b["), !objects);
    }
}

TEST(CommandLine, AReaderThatLeavesIsNoError) {
    ChildProcess child(WithFake({"call", "Big"}), {});
    child.CloseOutput();
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_EQ(child.err, "");
}

TEST(CommandLine, DemoCleansUpAfterItself) {
    const TempFolder temporary;
    const std::string where = "TMPDIR=" + temporary.path();
    {
        ChildProcess child({"demo"}, {{where}, false});
        EXPECT_EQ(child.Wait(), 0) << child.err;
        EXPECT_TRUE(Contains(child.out, "Drachenk\u00fcste/")) << child.out;
    }
    {
        ChildProcess child(WithFake({"demo"}), {{where, "FAKE_PLUGIN=start-fails"}, false});
        EXPECT_EQ(child.Wait(), 3) << child.err;
    }
    EXPECT_TRUE(std::filesystem::is_empty(temporary.path()));
    ChildProcess child(WithFake({"demo", "--keep"}), {{where}, false});
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_TRUE(Contains(child.err, "kept the temporary home " + temporary.path()));
    EXPECT_FALSE(std::filesystem::is_empty(temporary.path()));
}

}  // namespace
