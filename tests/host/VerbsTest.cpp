// The verbs about captures, drives and settings: what they ask, what they print, and how they fail.
#include <csignal>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "gallery-host/base/Paths.h"
#include "gallery-host/output/Progress.h"
#include "gallery-host/verbs/Thumbnail.h"
#include "tests/host/HostRun.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TemporaryHome.h"

namespace {

struct Case {
    std::vector<std::string> arguments;
    std::vector<std::string> asked;  // parts of the envelopes that go out
    int status;
    std::string out;
    std::string err;  // a part
};

// In `folder` are an own capture "a.png" and one that is none, "foreign.png".
class Verbs : public testing::Test {
  protected:
    void Check(const Case& one) const {
        std::vector<std::string> arguments = one.arguments;
        arguments.insert(arguments.end(), {"-d", "trace"});
        const Ended ended = RunHost(arguments);
        const std::string what = testing::PrintToString(one.arguments) + ended.err;
        EXPECT_EQ(ended.status, one.status) << what;
        EXPECT_EQ(ended.out, one.out) << what;
        for (const std::string& asked : one.asked)
            EXPECT_TRUE(Contains(ended.err, asked)) << asked << what;
        EXPECT_TRUE(Contains(ended.err, one.err)) << one.err << what;
        EXPECT_FALSE(Contains(ended.err, "\r")) << what;
    }

    const ScopedEnv zone_{"TZ", "UTC"};
    TemporaryHome home_;
    const std::string gallery_ = home_.folder().MakeFolder("Videos/ZORVEX/Ovirastream");
    const TempFolder folder_;
    const std::string own_ = folder_.Write("a.png", "x");
    const std::string foreign_ = folder_.Write("foreign.png", "x");
};

TEST_F(Verbs, AskAndTellTheRecord) {
    const std::string file = R"("payload":{"file":")" + own_;
    const Case cases[] = {
        {{"show", own_},
         {R"("method":"GetFileMetadata")", R"("method":"GetImageFileDimensions")", file},
         0,
         "File     " + own_ + "\nKind     image, highlight\nMade by  highlights SDK\n" +
             "Saved    2026-03-14 18:06\nSize     13 kB\nPixels   640 x 360\nGame     Ra\\x1bce\n" +
             "CMS id   7\nEvent    2026-03-14 18:05\n",
         ""},
        {{"show", foreign_}, {}, 1, "", foreign_ + ": not a capture that the gallery has on record\n"},
        {{"show", foreign_ + "x"}, {}, 1, "", foreign_ + "x: No such file or directory\n"},
        {{"recent"},
         {R"("payload":{"count":10})"},
         0,
         "Race/a.png  image  screenshot  13 kB    2026-03-14 18:06\n",
         ""},
        {{"stats", "Race"}, {R"("payload":{"appName":"Race"})"}, 0, "Race: 1 video, 3 images\n", ""},
        {{"stats", "Empty"}, {}, 0, "Empty: no videos, no images\n", ""},
        {{"stats", "Nope"}, {}, 1, "", "no game \"Nope\" on record"},
        {{"stats", "--json", "Race"},
         {},
         0,
         "{\n  \"game\": \"Race\",\n  \"videos\": 1,\n  \"screenshots\": 3\n}\n",
         ""},
    };
    home_.folder().MakeFolder("Videos/ZORVEX/Ovirastream/Empty");
    for (const Case& one : cases)
        Check(one);
    EXPECT_TRUE(Contains(RunHost({"show", own_, "--json"}).out, "\"width\": 640"));
    EXPECT_TRUE(Contains(RunHost({"recent", "--json"}).out, "{\n  \"recents\": [\n    {\n      \"path\""));
}

TEST_F(Verbs, AskForDrivesAndSettings) {
    const Case cases[] = {
        {{"drives"},
         {R"("payload":{"drive":"/."})", R"("payload":{"drive":"/out"})"},
         0,
         "DRIVE  KIND                             FREE\n"
         "/      fixed      81.0 GB of an unknown size\n"
         "/out   removable                           -\n",
         ""},
        {{"settings"}, {}, 0, "Gallery  " + gallery_ + "\nCap      on, 50 % of 512 GB (1.2 GB used)\n", ""},
        {{"settings", "set", "--cap", "off", "--cap-percent", "20", "--temp", folder_.path()},
         {R"("settings":{"tempFolderPath":")" + folder_.path() +
          R"(","capacity":{"enabled":false,"capacityPercent":20}})"},
         0,
         "",
         "settings saved\n"},
        {{"settings", "set", "--cap-percent", "99"}, {}, 0, "", "the settings are so already\n"},
        {{"settings", "set", "--path", "/bad/a/../x"},
         {R"({"userGalleryPath":"/bad/x"})"},
         1,
         "",
         "/bad/x: not a folder that can be used; nothing is saved\n"},
        {{"settings", "set", "--path", "/other"},
         {R"({"userGalleryPath":"/other"})"},
         0,
         "",
         "the gallery is looked through: no captures in " + gallery_},
    };
    for (const Case& one : cases)
        Check(one);
    EXPECT_TRUE(Contains(RunHost({"drives", "--all"}).out, "/sys   reserved"));
    EXPECT_TRUE(Contains(RunHost({"settings", "get", "--json"}).out, "\"capacityPercent\": 50"));
    EXPECT_EQ(RunHost({"settings", "set", "--path", "/other", "--timeout", "0.2"}, {}, "rebuilds").status, 4);
}

TEST_F(Verbs, GoOnAfterAFileThatFails) {
    const std::string into = folder_.MakeFolder("into");
    const std::string taken = folder_.Write("taken.png", "x");
    const std::string again = folder_.Write("b/a.png", "x");
    const std::string gone = folder_ / "gone.png";
    const auto json = [](const std::string& file, const std::string& rest) {
        return R"({"file":")" + file + "\"," + rest + "}\n";
    };
    const Case cases[] = {
        {{"cp", own_, folder_ / "new.png"},
         {R"("method":"CopyFile")",
          R"("payload":{"source":")" + own_ + R"(","destination":")" + (folder_ / "new.png") + "\"}"},
         0,
         "",
         "1 file copied\n"},
        {{"cp", foreign_, into}, {}, 1, "", "foreign.png: not one of the product's own captures\n"},
        {{"cp", own_, folder_ / "missing/"}, {}, 1, "", "a.png: there is no folder " + folder_.path()},
        {{"cp", own_, again, folder_ / "missing"}, {}, 1, "", "missing: not a folder"},
        {{"cp", own_, taken, gone, into, into, "--json"},
         {R"("destination":")" + into + "/a.png\""},
         1,
         json(own_, R"("destination":")" + into + R"(/a.png","ok":true)") +
             json(taken, R"("destination":")" + into + R"(/taken.png","ok":false,"error":")" + into +
                             R"(/taken.png is there already")") +
             json(gone, R"("destination":")" + into +
                            R"(/gone.png","ok":false,"error":"No such file or directory")") +
             json(into, R"("destination":")" + into + R"(/into","ok":true)"),
         "gallery-host: 2 of 4 files copied\n"},
        {{"cp", own_, again, into}, {}, 1, "", again + ": another file goes to " + into + "/a.png\n"},
        {{"mv", own_, folder_ / "new/"},
         {R"("method":"MoveFile")", R"("destination":")" + (folder_ / "new/a.png") + "\""},
         0,
         "",
         "1 file moved\n"},
        {{"rm", own_, foreign_, own_, gone},
         {R"("method":"RemoveGalleryItem")", R"("payload":{"file":")" + own_ + "\"}"},
         1,
         "",
         "gallery-host: 2 of 3 files removed\n"},
        {{"rm", "--dry-run", own_, foreign_},
         {R"("method":"GetFileMetadata")"},
         1,
         own_ + "\n",
         "gallery-host: 1 of 2 files would be removed\n"},
    };
    for (const Case& one : cases)
        Check(one);
}

TEST_F(Verbs, TellAnswersInOrder) {
    const std::string other = folder_.Write("b.png", "x");
    const std::string into = folder_.MakeFolder("into");
    const std::string out = RunHost({"cp", own_, other, into, "--json"}, {}, "reverses").out;
    EXPECT_EQ(out.find(R"({"file":")" + own_), 0u) << out;
    EXPECT_TRUE(Contains(out, "\n{\"file\":\"" + other)) << out;
}

TEST_F(Verbs, ShowHowFarTheyAreOnATerminal) {
    const std::vector<std::string> copy = {"cp", own_, folder_ / "never.png", folder_.MakeFolder("into")};
    ChildProcess child(WithFake(copy), {{"TERM=xterm"}, false, true});
    ASSERT_TRUE(child.ReadErrUntil("\rcopying  [############------------]  1 of 2\x1b[K")) << child.err;
    child.Signal(SIGINT);
    EXPECT_EQ(child.Wait(), 130);
    EXPECT_TRUE(Contains(child.err, "\r\x1b[Kgallery-host: interrupted; 1 of 2 files copied")) << child.err;

    ChildProcess late(WithFake({copy[0], copy[1], copy[2], copy[3], "--timeout", "0.3"}), {});
    EXPECT_EQ(late.Wait(), 4);
    EXPECT_EQ(
        late.err,
        "gallery-host: no answer to CopyFile within 0.3 s; 1 of 2 files copied, perhaps with some that were "
        "under way\n");
}

TEST_F(Verbs, WriteAThumbnailWholeOrNotAtAll) {
    const std::string png = "\x89PNG\r\n\x1a\n";
    const std::string out = folder_ / "out.png";
    Check({{"thumb", own_, "-o", out, "--size", "64x36"},
           {R"("payload":{"file":")" + own_ + R"(","width":64,"height":36})"},
           0,
           "",
           ""});
    EXPECT_EQ(folder_.Read("out.png"), png);
    EXPECT_EQ(RunHost({"thumb", own_, "-o", "-"}).out, png);
    folder_.Write("out.png", "old");
    Check({{"thumb", folder_ / "none.png", "-o", out}, {}, 1, "", "can make no thumbnail"});
    Check({{"thumb", folder_ / "broken.png", "-o", out}, {}, 1, "", "is not a PNG image"});
    EXPECT_EQ(folder_.Read("out.png"), "old");
    Check({{"thumb", own_, "-o", "/dev/null"}, {}, 1, "", "cannot write /dev/null: it is no ordinary file"});
    Check({{"thumb", own_, "-o", folder_ / "no/o.png"}, {}, 1, "", "o.png: No such file or directory"});
    const auto files = std::filesystem::directory_iterator(folder_.path());
    EXPECT_EQ(std::distance(begin(files), end(files)), 3) << "something is left behind";
}

TEST(HostParts, ReadSizesAndLines) {
    for (const char* wrong :
         {"", "320", "x180", "320x", "320x180x", "0x1", "1x-1", "16385x1", "9999999999x1"})
        EXPECT_FALSE(host::ReadThumbSize(wrong)) << wrong;
    EXPECT_EQ(host::ReadThumbSize("16384x1")->width, 16384u);
    EXPECT_EQ(host::ProgressLine("moving", 9, 9, 80), "moving  [########################]  9 of 9");
    EXPECT_EQ(host::ProgressLine("moving", 0, 9, 42), "moving  0 of 9");
}

TEST(HostParts, AbsolutePathsFollowLinksOnlyWhereTheyMust) {
    const TempFolder folder;
    folder.MakeFolder("real/sub");
    std::filesystem::create_directory_symlink(folder / "real/sub", folder / "link");
    std::filesystem::create_symlink("nowhere", folder / "real/file");
    EXPECT_EQ(host::AbsolutePath(folder / "link/./new.png"), folder / "link/new.png");
    EXPECT_EQ(host::AbsolutePath(folder / "link/../file"), folder / "real/file");
    EXPECT_EQ(host::AbsolutePath("x"), (std::filesystem::current_path() / "x").string());
}

}  // namespace
