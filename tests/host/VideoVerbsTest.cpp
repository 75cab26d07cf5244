// The verbs that change videos and make them.
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/host/HostRun.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TemporaryHome.h"

namespace {

// With "a.mp4", a video that all goes well with, and others named for what does not.
class VideoVerbs : public testing::Test {
  protected:
    VideoVerbs() { std::filesystem::create_directories(home_ / "Videos/ZORVEX/Ovirastream"); }

    std::string Make(const std::string& name) const { return folder_.Write(name, "x"); }

    const TemporaryHome home_;
    const TempFolder folder_;
    const std::string video_ = Make("a.mp4");
    const std::string temporary_ = folder_.MakeFolder("tmp");
    const ScopedEnv where_{"TMPDIR", temporary_};
};

TEST_F(VideoVerbs, RequestAndCheckTheResult) {
    const std::string broken = Make("broken.mp4");
    const std::string clip = folder_ / "clip.mp4";
    const std::string outside = folder_ / "outside.mp4";
    ExpectEach({
        {{"trim", video_, "-o", clip, "--from", "1:30", "--to", "92.5"},
         0,
         R"("payload":{"input":")" + video_ + R"(","output":")" + clip +
             R"(","headTrimMs":90000.0,"lengthMs":2500.0})"},
        {{"trim", video_, "--length", "0.5"},
         0,
         R"("output":")" + video_ + R"(","headTrimMs":0.0,"lengthMs":500.0})"},
        {{"trim", video_, "-o", outside, "--length", "1"}, 0, outside + ": the clip is there"},
        {{"trim", broken, "-o", outside, "--length", "1"}, 1, "could not be cut"},
        {{"trim", folder_ / "broken", "-o", outside, "--length", "1"}, 1, "No such file"},
        {{"meme", video_, "--top", "x", "--bottom", "y"},
         0,
         R"("memeInfo":{"topBarText":"x","bottomBarText":"y"})"},
        {{"meme", video_, "--clear"}, 0, R"("memeInfo":{"topBarText":"","bottomBarText":""})"},
        {{"meme", Make("foreign.mp4"), "--clear"}, 1, "not a capture"},
        {{"engrave", video_, "--app", "Race", "--cms-id", "7", "--highlight", "--definition", "D", "--group",
          "G", "--significance", "4", "--media-type", "Montage", "--short-name", "r"},
         0,
         R"("DRSProfileName":"","DRSAppName":"Race","DRSShortName":"r","highlightDefinitionId":"D",)"
         R"("highlightGroupId":"G","mediaType":"Montage","cmsId":7,"isAHighlight":true,"highlightSignificance":4})"},
        {{"engrave", broken}, 1, "could not be engraved"},
    });
}

TEST_F(VideoVerbs, MakeAMontage) {
    const std::string out = folder_ / "montage.mp4";
    const Ended ended = RunHost({"montage", "r.js", video_, Make("foreign.png"), Make("b.MP3"), "-o", out,
                                 "--title", "T", "--json", "-d", "trace"});
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(ended.out, "{\"output\":\"" + out + "\",\"ok\":true}\n");
    for (const std::string& asked :
         {R"("recipe":"r.js","output":")" + out + R"(","inputs":[{"details":{"path":")" + video_ +
              R"(","duration":2500.0},"inputFileType":"video"})",
          std::string(R"(foreign.png","duration":0.0},"inputFileType":"image"})"),
          std::string(R"(b.MP3","duration":2500.0},"inputFileType":"audio"}])"),
          std::string(R"({"titleSequence":{"seqType":"titleBasic","seqDetails":{"txtTitle":"T"}}})")})
        EXPECT_TRUE(Contains(ended.err, asked)) << asked << ended.err;
    EXPECT_TRUE(std::filesystem::is_empty(temporary_)) << "the socket's folder is removed";

    ExpectEach({{{"montage", "r.js", video_, "-o", folder_ / "nowhere.mp4"}, 1, ""},
                {{"montage", "r.js", video_, "-o", folder_ / "broken.mp4"}, 1, ""},
                {{"montage", "r.js", video_, "-o", folder_ / "no/x.mp4"}, 1, ""},
                {{"montage", "r.js", video_, Make("a.txt"), "-o", out}, 1, ""},
                {{"montage", "r.js", video_, folder_ / "missing.mp4", "-o", out}, 1, ""}});
}

TEST_F(VideoVerbs, WhatAKilledHostLeavesIsRemovedByTheNext) {
    ChildProcess alive(WithFake({"serve"}), {});
    ChildProcess killed(WithFake({"serve"}), {});
    for (ChildProcess* serve : {&alive, &killed}) {
        serve->Write("{\"method\":\"Echo\"}\n");
        ASSERT_TRUE(serve->ReadOutUntil("\n"));
    }
    killed.Signal(SIGKILL);
    killed.Wait();
    const auto count = [this] {
        const std::filesystem::directory_iterator left(temporary_);
        return std::distance(begin(left), end(left));
    };
    EXPECT_EQ(count(), 2);
    EXPECT_EQ(RunHost({"serve"}).status, 0);
    EXPECT_EQ(count(), 1) << "that of the one that lives";
    EXPECT_EQ(alive.Wait(), 0);
}

// With the real plug-in, and the montage process of the tests.
TEST_F(VideoVerbs, TheMontageProcessReachesItsContainer) {
    for (const char* recipe : {"r.js", "hangs.js"})
        home_.folder().Write(std::string("data/ZORVEX/OvirastreamX/Montage/v1/") + recipe, "//");
    const std::string out = folder_ / "best.mp4";
    ChildProcess child({"montage", "r.js", video_, "-o", out, "--json"}, {});
    EXPECT_EQ(child.Wait(), 0) << child.err;
    EXPECT_EQ(child.out.find("{\"progress\":12.5}\n"), 0u) << child.out;
    EXPECT_TRUE(Contains(child.out, "\n{\"output\":\"" + out + "\",\"ok\":true}\n")) << child.out;
    EXPECT_TRUE(std::filesystem::is_empty(temporary_)) << "the socket's folder is removed";

    // An interrupt cancels the montage first, and waits until it has ended.
    ChildProcess hanging({"montage", "hangs.js", video_, "-o", out, "--json"}, {});
    ASSERT_TRUE(hanging.ReadOutUntil("12.5")) << hanging.err;
    hanging.Signal(SIGINT);
    EXPECT_EQ(hanging.Wait(), 130);
    EXPECT_TRUE(Contains(hanging.err, "gallery-host: canceling the montage")) << hanging.err;
    EXPECT_FALSE(Contains(hanging.err, "has not ended")) << hanging.err;
    EXPECT_TRUE(std::filesystem::is_empty(temporary_));

    const std::string request =
        R"({"method":"CreateMontageFromRecipe","uniqueid":"m","payload":{"inputs":[{"details":)"
        R"({"path":"/a.mp4","duration":5},"inputFileType":"video"}],"recipe":"r.js","behaviour":"babbles",)"
        R"("output":")" +
        out + "\"}}\n";
    ChildProcess serve({"serve"}, {});
    serve.Write(request);
    EXPECT_EQ(serve.Wait(), 0);
    EXPECT_TRUE(Contains(serve.out, R"("payload":{"progress":12.5)")) << serve.out;
    EXPECT_FALSE(Contains(serve.out, "UpdateMontageProgress")) << "its answers are dropped";
    for (const char* said : {"sent a message that is not JSON", "of 100000 bytes, which is too long",
                             "sent a subscription", "refused a message of a child process"})
        EXPECT_TRUE(Contains(serve.err, said)) << said << serve.err;
}

}  // namespace
