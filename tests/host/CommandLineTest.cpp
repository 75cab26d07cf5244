// What a user sees of gallery-host: the verbs, their messages and their exit statuses.
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>

#include "tests/host/HostRun.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TempGallery.h"

namespace {

TEST(CommandLine, UsageErrorsAreTwo) {
    for (const char* line :
         {"", "frobnicate", "-d nonsense serve", "--timeout 0 serve", "list --exr", "stats", "settings set",
          "thumb a -o b --size 320x", "thumb a -o - --json", "trim a", "trim a --to 2 --length 1",
          "trim a --from 2 --to 2", "meme a", "meme a --clear --top x", "engrave a --cms-id x",
          "call Echo [1]", "call Echo {\"a\":", "call Echo @/"}) {
        std::istringstream words(line);
        const Ended ended = RunHost({std::istream_iterator<std::string>(words), {}});
        EXPECT_EQ(ended.status, 2) << line << ended.err;
        EXPECT_EQ(ended.out, "");
        EXPECT_NE(ended.err, "");
    }
}

TEST(CommandLine, HelpVersionAndModesNeedNoPlugin) {
    EXPECT_TRUE(Contains(RunHost({"--help"}, {}, "old").out, "gallery-host call GetFolderListing"));
    EXPECT_TRUE(Contains(RunHost({"--version"}, {}, "old").out, "gallery-host 1."));
    EXPECT_TRUE(Contains(RunHost({"-d", "list"}, {}, "old").out, "keep-temp"));
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
    EXPECT_TRUE(Contains(RunHost({"call", "Echo", "@" + folder.Write("p", R"({"c":[]})")}).out, "\"c\": []"));
    const Ended failed = RunHost({"call", "Fail"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.err, "gallery-host: 0x80070057: Bad \\x1b[31margument\n");
    EXPECT_TRUE(Contains(failed.out, "-2147024809"));
}

TEST(CommandLine, LogLinesAndDebuggingModesAreShownOnRequest) {
    EXPECT_EQ(RunHost({"call", "Log"}).err, "");
    EXPECT_TRUE(Contains(RunHost({"call", "Log", "-v"}).err, "a line with \\x1b[31mcolour\n"));
    EXPECT_EQ(RunHost({"-d", "watcher", "call", "Log"}).err,
              "[now][4][Gallery FILE] Watch.cpp:1 seen at level 4\n");
    const std::string shown = RunHost({"-d", "timers", "-d", "trace", "call", "Echo", R"({"q":1})"}).err;
    size_t at = 0;
    for (const char* next : {" ms  load\n", " ms  start\n", "-> {\"method\":\"Echo\"",
                             "<- {\"system\":\"Host\"", " ms  Echo\n", " ms  stop\n"}) {
        at = shown.find(next, at);
        EXPECT_NE(at, std::string::npos) << next << shown;
    }
}

TEST(CommandLine, ListsAFolder) {
    const TempFolder folder;
    const Ended plain = RunHost({"list", folder.path()});
    EXPECT_EQ(plain.status, 0) << plain.err;
    EXPECT_TRUE(Contains(plain.out, "\nSome Game/ ")) << plain.out;
    EXPECT_TRUE(Contains(plain.out, "\nbad\\x1b]0;name\\x07.mp4  video")) << plain.out;
    ExpectEach({{{"list", folder.path() + "/.", "--only-own", "--exclude", "empty", "--exr"},
                 0,
                 R"({"directory":")" + folder.path() +
                     R"(/","shouldGetOnlyZv":true,"excludeDirectoryType":"empty","shouldShowEXR":true})"},
                {{"list", "/nowhere/at all"}, 1, "gallery-host: /nowhere/at all: No such file"},
                {{"list", GALLERY_HOST}, 1, "not a folder"}});
}

// By the real plug-in.
TEST(CommandLine, ListsTheGalleryOnceItIsComplete) {
    const TempGallery gallery;
    const auto list = [](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "list");
        ChildProcess child(arguments, {});
        EXPECT_EQ(child.Wait(), 0) << child.err;
        return child.out;
    };
    EXPECT_EQ(list({}), "");
    gallery.AddImage("Some Game/a.png");
    gallery.AddHighlight("Some Game/b.mp4");
    const std::string table = list({});
    EXPECT_EQ(table.find("Some Game: 1 video, 1 image\n  "), 0u) << table;
    EXPECT_TRUE(Contains(table, "  b.mp4  video  highlight  1 kB  00:00:02  2")) << table;
    EXPECT_TRUE(Contains(list({"--json"}), "{\n  \"games\": [\n    {\n      \"name\": \"Some Game\""));

    const Ended busy = RunHost({"list", "--timeout", "0.2"}, {}, "rebuilds");
    EXPECT_EQ(busy.status, 4);
    EXPECT_EQ(busy.out, "");
    EXPECT_TRUE(Contains(busy.err, "the scan of the gallery did not end within")) << busy.err;
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
    const auto demo = [&](const std::vector<std::string>& arguments, const std::string& behaviour) {
        ChildProcess child(arguments, {{where, "FAKE_PLUGIN=" + behaviour}});
        const int status = child.Wait();
        return Ended{status, child.out, child.err};
    };
    EXPECT_TRUE(Contains(demo({"demo"}, "").out, "Drachenk\u00fcste/"));
    EXPECT_EQ(demo(WithFake({"demo"}), "start-fails").status, 3);
    EXPECT_TRUE(std::filesystem::is_empty(temporary.path()));
    const Ended kept = demo(WithFake({"demo", "--keep"}), "");
    EXPECT_TRUE(Contains(kept.err, "kept the temporary home " + temporary.path())) << kept.err;
    EXPECT_FALSE(std::filesystem::is_empty(temporary.path()));
}

}  // namespace
