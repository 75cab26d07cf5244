// Files that come and go: their records, what is written of them, when it is notified, and the limits of the
// gallery and its disk.
#include <cmath>
#include <future>

#include "plugin-modules/Gallery/src/tracker/CaptureInspector.h"
#include "tests/unit/tracker/UGCTrackerTest.h"

namespace {

using std::chrono::milliseconds;

TEST_F(UGCTrackerTest, TrackingIsNotifiedOnceWrittenAndSharesOnlyWrites) {
    OpenSettled();
    const std::string a = gallery_.AddImage("Game/a.png");
    const std::string b = gallery_.AddHighlight("Game/b.mp4");
    const std::string foreign = gallery_.Add("Game/c.png", "no capture");
    tracker_->TrackFile(a);
    tracker_->TrackFile(b);
    tracker_->TrackFile(foreign);
    tracker_->TrackFile(a);
    ASSERT_TRUE(Step());
    EXPECT_TRUE(tracker_->IsTrackedFile(a));
    EXPECT_EQ(host_.Told(), "");
    EXPECT_FALSE(gallery_.home().Has(gallery_.ShareFile("UGCTracker.json")));
    RunDue();
    EXPECT_EQ(host_.Told(), "usage 0, added 1 a.png, usage 0, added 2 b.mp4");
    EXPECT_EQ(Records(), "1 a.png;2 b.mp4;");
    EXPECT_EQ(FileCrc(), DiskCrc());
    EXPECT_EQ(log_.Count("Track File failed 0x80004005[0]: Not a ZV File"), 1);
    // No longer than the limit of a live run.
    tracker_->TrackFile(gallery_.AddImage("Game/d.png"));
    tracker_->TrackFile(gallery_.AddImage("Game/e.png"));
    ASSERT_TRUE(Step());
    clock_.Advance(milliseconds(100));
    tracker_->TrackFile(gallery_.AddImage("Game/f.png"));
    ASSERT_TRUE(Step());
    EXPECT_EQ(host_.Told(), "usage 0, added 3 d.png, usage 0, added 4 e.png");
    EXPECT_NE(FileCrc(), DiskCrc()) << "an end now must not make the third be forgotten";
    // A stop leaves nothing unwritten, and drops what is only queued.
    RunDue();
    host_.Told();
    tracker_->TrackFile(gallery_.AddImage("Game/g.png"));
    tracker_->TrackFile(gallery_.AddImage("Game/h.png"));
    ASSERT_TRUE(Step());
    tracker_.reset();
    EXPECT_EQ(host_.Told(), "usage 0, added 6 g.png");
    EXPECT_EQ(Records(), "1 a.png;2 b.mp4;3 d.png;4 e.png;5 f.png;6 g.png;");
    EXPECT_NE(FileCrc(), DiskCrc());
}

TEST_F(UGCTrackerTest, ASlowSumWaitsUntilTheCaptureIsNotified) {
    Open(false, milliseconds(-1));
    RunDue();
    host_.Told();
    std::vector<bool> fits;
    host_.onTold = [&] { fits.push_back(FileCrc() == DiskCrc()); };
    EXPECT_EQ(Track(gallery_.AddImage("Game/a.png")), "usage 0, added 1 a.png");
    EXPECT_EQ(fits, std::vector<bool>({false, false}));
    EXPECT_EQ(Records(), "1 a.png;");
    EXPECT_EQ(FileCrc(), DiskCrc());
}

TEST_F(UGCTrackerTest, AFailedWriteIsNotNotifiedAndTheNextRepairsIt) {
    OpenSettled();
    const std::string file = gallery_.home().MakeFolder(gallery_.ShareFile("UGCTracker.json"));
    EXPECT_EQ(Track(gallery_.AddImage("Game/a.png")), "");
    EXPECT_EQ(log_.Count("TrackUGC::Failed to write to tracker"), 1);
    EXPECT_TRUE(log_.Has("Track File failed 0x80070002[0]: Failed to open file"));
    std::filesystem::remove(file);
    EXPECT_EQ(Track(gallery_.AddImage("Game/b.png")), "usage 0, added 2 b.png");
    EXPECT_EQ(Records(), "1 a.png;2 b.png;");
}

TEST(CaptureInspector, AFileMayClaimAnyLength) {
    std::string text;
    uint32_t length = 0;
    EXPECT_TRUE(FormatDuration(359999.9, text, length));
    EXPECT_EQ(text, "99:59:59");
    for (const double seconds : {360000.0, -1.0, std::nan(""), HUGE_VAL})
        EXPECT_FALSE(FormatDuration(seconds, text, length)) << seconds;
}

// What the product does itself is on record at once, whatever the worker is at.
TEST_F(UGCTrackerTest, OwnChangesAreOnRecordBeforeTheWorkerRuns) {
    OpenSettled();
    const std::string a = gallery_.AddImage("Game/a.png");
    const std::string b = gallery_.Path("Other/b.png");
    tracker_->TrackNow(a);
    EXPECT_TRUE(tracker_->IsTrackedFile(a));
    RunDue();
    EXPECT_EQ(host_.Told(), "usage 0, added 1 a.png");
    // News from before the move, of a file that was where the moved one is now.
    tracker_->UntrackFile(b);
    gallery_.home().MakeFolder("Videos/ZORVEX/Ovirastream/Other");
    std::filesystem::rename(a, b);
    tracker_->UntrackNow(a);
    tracker_->TrackNow(b);
    EXPECT_FALSE(tracker_->IsTrackedFile(a));
    EXPECT_TRUE(tracker_->IsTrackedFile(b));
    // The watcher's news of it.
    tracker_->UntrackFile(a);
    tracker_->TrackFile(b);
    RunDue();
    EXPECT_EQ(host_.Told(), "deleted 1 a.png, usage 0, usage 0, added 2 b.png");
    EXPECT_EQ(Records(), "2 b.png;");
    EXPECT_EQ(FileCrc(), DiskCrc());
}

// By folder and not by text: what can never be on record is neither tracked nor waited for.
TEST_F(UGCTrackerTest, OnlyFilesOfGameFoldersAreWaitedFor) {
    OpenSettled();
    gallery_.AddImage("Game/a.png");
    std::filesystem::create_directory_symlink(gallery_.path(), gallery_.home() / "alias");
    std::atomic<bool> cancelled{false};
    const std::string ignored = gallery_.AddImage("Game/ignored.png");
    tracker_->ignoreList().AddToIgnoreList({ignored, ignored});
    EXPECT_EQ(Track(ignored), "");
    tracker_->ignoreList().RemoveFromIgnoreList({ignored});
    EXPECT_EQ(Track(ignored), "usage 0, added 1 ignored.png");
    const auto never = std::chrono::steady_clock::time_point::max();
    for (const std::string& path :
         {gallery_.AddImage("top.png"), gallery_.AddImage("Game/deep/b.png"),
          gallery_.AddImage(".hidden/c.png"), gallery_.home().Write("Videos/d.png", "d"),
          gallery_.Path("none/e.png"), std::string("a.png")}) {
        tracker_->TrackNow(path);
        EXPECT_FALSE(tracker_->AwaitTracked(path, never, cancelled)) << path;
    }
    EXPECT_FALSE(tracker_->IsTrackedFile(gallery_.Path("Game/a.png")));
    tracker_->TrackNow(gallery_.home() / "alias/Game/../Game/a.png");
    EXPECT_TRUE(tracker_->IsTrackedFile(gallery_.Path("Game/a.png")));
    EXPECT_TRUE(tracker_->AwaitTracked(gallery_.home() / "alias/Game/a.png", never, cancelled));
    // A wait ends with its task, and with the tracker.
    for (const bool stops : {false, true}) {
        auto wait = std::async(std::launch::async, [&] {
            return tracker_->AwaitTracked(gallery_.Path("Game/later.png"), never, cancelled);
        });
        cancelled = !stops;
        if (stops)
            tracker_->Stop();
        else
            tracker_->WakeWaiting();
        EXPECT_FALSE(wait.get());
        cancelled = false;
    }
}

TEST_F(UGCTrackerTest, NotifiesEachCrossingOfTheLimitAndOfLowSpace) {
    OpenSettled();
    Settings& settings = *host_.GetGallerySettings();
    settings.SetTotalDiskSpaceMB(100);
    settings.SetMaxSizePercent(2);
    settings.SetCapEnabled(true);
    const std::string big = gallery_.AddImage("Game/big.png");
    std::filesystem::resize_file(big, 2000000);
    EXPECT_EQ(Track(big), "usage 2, added 1 big.png");
    const auto start = clock_.Now();
    RunUntilTold("full");
    EXPECT_EQ(std::chrono::round<std::chrono::seconds>(clock_.Now() - start).count(), 8);
    EXPECT_EQ(tracker_->GetCurrentSizeMB(), 1u);
    gallery_.Remove("Game/big.png");
    tracker_->UntrackFile(big);
    RunDue();
    EXPECT_EQ(host_.Told(), "deleted 1 big.png, usage 0");
    RunUntilTold("not full");
    host_.lowDisk = true;
    RunUntilTold("disk low");
    RunUntilTold("disk low");
    host_.galleryGone = true;
    RunUntilTold("disk fine");
    EXPECT_TRUE(log_.Has("MonitorDiskSpace: 0x80004005"));
}

}  // namespace
