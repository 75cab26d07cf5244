// Two trackers on one share folder, as those of two processes: locks do not tell the difference.
#include "tests/unit/tracker/UGCTrackerTest.h"

namespace {

constexpr std::chrono::milliseconds kFollowed{600};

class TwoTrackersTest : public UGCTrackerTest {
  protected:
    static std::unique_ptr<UGCTracker> Make(RecordingHost& host, KXP::Clock& clock) {
        UGCTracker::Parts parts{clock, false, true, {}, std::chrono::milliseconds(5)};
        // The watchers are there and report nothing by themselves.
        parts.watcher.polling = true;
        parts.watcher.pollInterval = parts.watcher.networkPollInterval = std::chrono::hours(1);
        return std::make_unique<UGCTracker>(&host, false, parts);
    }
    void Follow(UGCTracker& tracker) { RunDue(tracker, kFollowed); }
    static std::string CaptionIn(const UGCTracker& tracker, const std::string& path) {
        TrackedUGC record;
        EXPECT_EQ(tracker.GetUGCData(path, record).code, 0) << path;
        return std::to_string(record.id) + std::string(record.topBarText);
    }

    RecordingHost other_;
};

// What an abandoned tracker had queued is done when its disk answers again.
TEST_F(TwoTrackersTest, AnAbandonedTrackerWritesOnlyAFileThatNobodyElseHasTaken) {
    enum class Meanwhile { Nothing, AnotherOwns, AnotherHasWritten };
    const std::string dropped = "has another owner or has changed, and what was not written is dropped";
    gallery_.AddImage("Game/0.png");
    int number = 0;
    for (const auto meanwhile : {Meanwhile::Nothing, Meanwhile::AnotherOwns, Meanwhile::AnotherHasWritten}) {
        const auto first = Make(host_, clock_);
        RunDue(*first);
        const std::string capture = gallery_.AddImage("Game/" + std::to_string(++number) + ".png");
        first->TrackFile(capture);
        host_.Told();
        first->Abandon();
        std::unique_ptr<UGCTracker> second;
        if (meanwhile != Meanwhile::Nothing) {
            second = Make(other_, clock_);
            RunDue(*second);
            ASSERT_EQ(second->AddMeme(capture, "second", "").code, 0) << "it owns the record";
        }
        if (meanwhile == Meanwhile::AnotherHasWritten) second.reset();
        const std::string before = gallery_.home().Read(gallery_.ShareFile("UGCTracker.json"));
        log_.Clear();
        RunDue(*first);
        first->Stop();
        const std::string after = gallery_.home().Read(gallery_.ShareFile("UGCTracker.json"));
        if (meanwhile == Meanwhile::Nothing) {
            EXPECT_EQ(Records(), "1 0.png;2 1.png;");
        } else {
            EXPECT_EQ(after, before);
        }
        EXPECT_EQ(log_.Count(dropped), meanwhile == Meanwhile::Nothing ? 0 : 1);
        EXPECT_TRUE(first->HasStopped());
        EXPECT_EQ(host_.Told(), "");
    }
    // Nothing of it is left that would keep the next one from the file.
    const auto last = Make(host_, clock_);
    RunDue(*last);
    EXPECT_EQ(last->AddMeme(gallery_.AddImage("Game/1.png"), "last", "").code, 0);
}

TEST_F(TwoTrackersTest, TheSecondFollowsHandsOverAndTakesOver) {
    const std::string a = gallery_.AddImage("Game/a.png");
    const auto first = Make(host_, clock_);
    RunDue(*first);
    const auto second = Make(other_, clock_);
    RunDue(*second);
    EXPECT_EQ(CaptionIn(*second, a), "1");
    EXPECT_EQ(host_.Told() + other_.Told(), "");

    // From the writer to the follower.
    const std::string b = gallery_.AddImage("Game/b.png");
    first->TrackFile(b);
    second->TrackFile(b);
    RunDue(*second);
    EXPECT_FALSE(second->IsTrackedFile(b)) << "who follows gives no ids";
    RunDue(*first);
    ASSERT_EQ(first->AddMeme(a, "first", "").code, 0);
    Follow(*second);
    EXPECT_EQ(CaptionIn(*second, a) + CaptionIn(*second, b), "1first2");
    EXPECT_EQ(other_.Told(), "usage 0, usage 0, added 2 b.png");
    // And back: captions, and a deletion, which the writer's watcher would report.
    ASSERT_EQ(second->AddMeme(b, "second", "").code, 0);
    EXPECT_EQ(CaptionIn(*second, b), "2second");
    Follow(*first);
    EXPECT_EQ(CaptionIn(*first, b), "2second");
    EXPECT_NE(gallery_.home().Read(gallery_.ShareFile("UGCTracker.json")).find("second"), std::string::npos);
    gallery_.Remove("Game/a.png");
    EXPECT_EQ(second->GetGameUGC("Game").size(), 1u);
    first->UntrackFile(a);
    RunDue(*first);
    Follow(*second);
    EXPECT_EQ(CaptionIn(*second, b), "2second");

    first->Stop();
    log_.Clear();
    const std::string c = gallery_.AddImage("Game/c.png");
    std::filesystem::create_directory(gallery_.Path("Empty"));
    Follow(*second);
    RunDue(*second, std::chrono::seconds(2));
    EXPECT_TRUE(log_.Has("this one goes on"));
    EXPECT_FALSE(log_.Has("rebuilding"));
    EXPECT_EQ(Records(), "2 b.png;3 c.png;") << "with what came while nobody wrote";
    EXPECT_EQ(CaptionIn(*second, b), "2second");
    EXPECT_EQ(FileCrc(), DiskCrc());
    second->Stop();
    OpenSettled();
    EXPECT_FALSE(log_.Has("rebuilding"));
    EXPECT_EQ(Records(), "2 b.png;3 c.png;");
}

}  // namespace
