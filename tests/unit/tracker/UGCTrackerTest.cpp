// The tracker over a real folder, with its worker's entries run one by one and the watcher's part played by
// the test.
#include <chrono>
#include <future>
#include <thread>

#include <gtest/gtest.h>

#include "common/JSONFile.h"
#include "common/JsonHelpers.h"
#include "plugin-modules/Gallery/src/media/FolderCrc.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"
#include "tests/support/FakeClock.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/TempGallery.h"

using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

class UGCTrackerTest : public testing::Test {
  protected:
    void Open(bool useUniqueFile = false, milliseconds sumInPassing = milliseconds(5)) {
        tracker_.reset();
        UGCTracker::Parts parts{clock_, false, false, {}, sumInPassing};
        tracker_ = std::make_unique<UGCTracker>(&host_, useUniqueFile, parts);
    }
    // One entry, with all that were enqueued before it due.
    bool Step() {
        clock_.Advance(std::chrono::microseconds(1));
        return tracker_->queue().Step();
    }
    // Runs what is due now, without a wait for later entries.
    void RunDue() {
        bool done = false;
        tracker_->queue().EnqueueNotification(tracker_->queue().Now(), [&] { done = true; });
        while (!done)
            ASSERT_TRUE(Step());
    }
    // Until `told` comes, across any time.
    void RunUntilTold(const std::string& told) {
        for (int i = 0; i < 50; ++i) {
            ASSERT_TRUE(Step());
            const std::string now = host_.Told();
            if (now.empty()) continue;
            ASSERT_EQ(now, told);
            return;
        }
        FAIL() << told;
    }
    void OpenSettled() {
        Open();
        RunDue();
        host_.Told();
    }
    std::string Track(const std::string& path) {
        tracker_->TrackFile(path);
        RunDue();
        return host_.Told();
    }

    KXP::Document File(const std::string& name = "UGCTracker.json") const {
        KXP::JSONFile file;
        file.Init(gallery_.home() / gallery_.ShareFile(name));
        KXP::Document document;
        EXPECT_EQ(file.ReadAndParseJSON(document).code, 0);
        return document;
    }
    // "id name" of each record of the file.
    std::string Records() const {
        std::string text;
        const KXP::Document document = File();
        for (const KXP::Value& record : document["UGC"].GetArray())
            text += std::to_string(record["id"].GetInt()) + " " +
                    std::filesystem::path(record["path"].GetString()).filename().string() + ";";
        return text;
    }
    uint32_t FileCrc() const { return File()["info"]["folderCRC"].GetUint(); }
    uint32_t DiskCrc() const {
        uint32_t crc = 0;
        media::CalculateFolderCRC(gallery_.path(), gallery_.path(), crc);
        return crc;
    }
    TrackedUGC RecordOf(const std::string& path) {
        TrackedUGC record;
        EXPECT_EQ(tracker_->GetUGCData(path, record).code, 0) << path;
        return record;
    }
    static std::string Ids(const std::vector<TrackedUGC>& records) {
        std::string text;
        for (const TrackedUGC& record : records)
            text += std::to_string(record.id) + " ";
        return text;
    }
    std::string IdsOfGame() { return Ids(tracker_->GetGameUGC("Game")); }
    std::string FilteredIds(int32_t tags) {
        std::vector<TrackedUGC> list;
        EXPECT_EQ(tracker_->GetFilteredHighlights(list, "Game", "group", tags, 0).code, 0);
        return Ids(list);
    }

    TempGallery gallery_;
    LogCapture log_;
    FakeClock clock_;
    RecordingHost host_;
    std::unique_ptr<UGCTracker> tracker_;
};

TEST_F(UGCTrackerTest, ARebuildFindsTheOwnFilesOfGameFoldersAndIsSilent) {
    gallery_.AddImage("Game/a.png");
    gallery_.AddHighlight("Game/b.mp4");
    gallery_.AddImage("top.png");
    gallery_.AddImage("Game/deep/c.png");
    gallery_.AddImage(".hidden/d.png");
    gallery_.Add("Game/foreign.png", captures::Png(""));
    std::filesystem::create_symlink(gallery_.Path("Game"), gallery_.Path("Link"));
    std::filesystem::create_symlink(gallery_.Path("Game"), gallery_.Path("Game/Loop"));
    Open();
    EXPECT_EQ(host_.GetGallerySettings()->GetTrackerUpdateState(), TrackerUpdateInProgress);
    RunDue();
    EXPECT_EQ(host_.Told(), "");
    EXPECT_EQ(host_.GetGallerySettings()->GetTrackerUpdateState(), TrackerUpdateComplete);
    const TrackedUGC image = RecordOf(gallery_.Path("Game/a.png"));
    const TrackedUGC video = RecordOf(gallery_.Path("Game/b.mp4"));
    EXPECT_EQ(image.profileName + image.fileType + image.fileSource, "GameimageOVS_Share");
    EXPECT_EQ(video.duration + video.audioType, "00:00:02Single");
    EXPECT_EQ(video.msDuration, 2000u);
    EXPECT_EQ(image.id + video.id, 3);
    EXPECT_EQ(tracker_->GetTrackedGames(), std::vector<std::string>{"Game"});
    EXPECT_EQ(File()["UGC"].Size(), 2u);
    EXPECT_EQ(FileCrc(), DiskCrc());
    EXPECT_EQ(log_.Count("Track File failed"), 1) << "the foreign one; a link to a folder is nobody's file";
}

TEST_F(UGCTrackerTest, AStartReadsTheFileOrRebuilds) {
    const std::string path = gallery_.AddImage("Game/a.png");
    const std::string file = gallery_.ShareFile("UGCTracker.json");
    OpenSettled();
    tracker_.reset();
    const std::string good = gallery_.home().Read(file);
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string text = good;
        text.replace(text.find(from), from.size(), to);
        return text;
    };
    // What the second start finds, and whether it takes it: a record that is taken keeps the source that only
    // the file says.
    const std::string marked = with("OVS_Share", "marked");
    struct Row {
        std::string text;
        bool taken;
        std::function<void()> before = [] {};
    } const rows[] = {
        {marked, true},
        {with("\"version\": 6", "\"version\": 5"), false},
        {with("\"version\"", "\"Version\""), false},
        {marked.substr(0, marked.size() / 2), false},
        {"", false},
        {"[]", false},
        {marked, false, [&] { host_.GetGallerySettings()->SetTrackerUpdateState(TrackerUpdateInProgress); }},
        {marked, false, [&] { gallery_.AddImage("Game/new.png"); }},
    };
    for (const Row& row : rows) {
        gallery_.home().Write(file, row.text);
        row.before();
        Open();
        RunDue();
        EXPECT_EQ(RecordOf(path).fileSource, row.taken ? "marked" : "OVS_Share") << row.text;
        tracker_.reset();
    }
}

TEST_F(UGCTrackerTest, TrackingIsToldOnceWrittenAndSharesWritesAlone) {
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

TEST_F(UGCTrackerTest, ASumThatTakesLongIsMadeWhenTheCaptureIsTold) {
    Open(false, milliseconds(-1));
    RunDue();
    host_.Told();
    std::vector<bool> fits;
    host_.onTold = [&] { fits.push_back(FileCrc() == DiskCrc()); };
    EXPECT_EQ(Track(gallery_.AddImage("Game/a.png")), "usage 0, added 1 a.png");
    EXPECT_EQ(fits, std::vector<bool>({false, false}));
    EXPECT_EQ(Records(), "1 a.png;");
    EXPECT_EQ(FileCrc(), DiskCrc());
    // Nor is it there as long as more is to come, also when that never does.
    tracker_->TrackFile(gallery_.AddImage("Game/b.png"));
    tracker_->TrackFile(gallery_.AddImage("Game/c.png"));
    ASSERT_TRUE(Step());
    clock_.Advance(milliseconds(200));
    tracker_->TrackFile(gallery_.AddImage("Game/d.png"));
    ASSERT_TRUE(Step());
    EXPECT_EQ(host_.Told(), "usage 0, added 2 b.png, usage 0, added 3 c.png");
    EXPECT_NE(FileCrc(), DiskCrc());
    host_.onTold = nullptr;
    tracker_.reset();
    EXPECT_EQ(Records(), "1 a.png;2 b.png;3 c.png;");
    EXPECT_NE(FileCrc(), DiskCrc());
}

TEST_F(UGCTrackerTest, AFailedWriteIsToldToNobodyAndMadeGoodByTheNext) {
    OpenSettled();
    const std::string file = gallery_.home().MakeFolder(gallery_.ShareFile("UGCTracker.json"));
    EXPECT_EQ(Track(gallery_.AddImage("Game/a.png")), "");
    EXPECT_EQ(log_.Count("TrackUGC::Failed to write to tracker"), 1);
    EXPECT_TRUE(log_.Has("Track File failed 0x80070002[0]: Failed to open file"));
    std::filesystem::remove(file);
    EXPECT_EQ(Track(gallery_.AddImage("Game/b.png")), "usage 0, added 2 b.png");
    EXPECT_EQ(Records(), "1 a.png;2 b.png;");
}

TEST_F(UGCTrackerTest, LengthsThatAVideoMayClaim) {
    OpenSettled();
    const auto track = [&](uint32_t scale, uint32_t duration) {
        gallery_.Remove("Game/v.mp4");
        tracker_->UntrackFile(gallery_.Path("Game/v.mp4"));
        Track(gallery_.Add("Game/v.mp4",
                           TempGallery::Video(scale, duration, captures::Block("Ovirastream SHARE", "{}"))));
        TrackedUGC record;
        return tracker_->GetUGCData(gallery_.Path("Game/v.mp4"), record).Failed() ? "refused"
                                                                                  : record.duration;
    };
    EXPECT_EQ(track(10, 3599999), "99:59:59");
    EXPECT_EQ(track(1, 360000), "refused");
    EXPECT_EQ(track(0, 1), "refused");
    EXPECT_EQ(track(0, 0), "refused");
    EXPECT_EQ(log_.Count("Failed to create duration string!"), 3);
}

TEST_F(UGCTrackerTest, IgnoredPathsAndFilesOfTheGalleryItselfAreNobodysBusiness) {
    OpenSettled();
    const std::string a = gallery_.AddImage("Game/a.png");
    tracker_->ignoreList().AddToIgnoreList({a, a});
    EXPECT_EQ(Track(a), "");
    EXPECT_EQ(Track(gallery_.AddImage("top.png")), "");
    EXPECT_EQ(Track(gallery_.Path("Game")), "");
    tracker_->ignoreList().RemoveFromIgnoreList({a});
    EXPECT_EQ(Track(a), "usage 0, added 1 a.png");
    tracker_->ignoreList().AddToIgnoreList({a});
    tracker_->UntrackFile(a);
    RunDue();
    EXPECT_TRUE(tracker_->IsTrackedFile(a));
}

TEST_F(UGCTrackerTest, FoldersComeAndGoWithTheirFilesAndTheGalleryStandsForAll) {
    OpenSettled();
    gallery_.AddImage("Game/a.png");
    tracker_->TrackFolder(gallery_.Path("Game"));
    RunDue();
    RunDue();
    EXPECT_EQ(host_.Told(), "usage 0, added 1 a.png");
    gallery_.Remove("Game");
    tracker_->UntrackFile(gallery_.Path("Game"));
    RunDue();
    EXPECT_EQ(host_.Told(), "deleted 1 a.png, usage 0");
    EXPECT_EQ(FileCrc(), DiskCrc());
    tracker_->UntrackFile(gallery_.Path("Game"));
    RunDue();
    EXPECT_TRUE(log_.HasLine(1, "UntrackFile failed"));
    gallery_.AddImage("Other/b.png");
    tracker_->TrackFolder(gallery_.path());
    RunDue();
    RunDue();
    EXPECT_EQ(host_.Told(), "");
    EXPECT_TRUE(tracker_->IsTrackedFile(gallery_.Path("Other/b.png")));
}

TEST_F(UGCTrackerTest, ListsDropWhatIsGoneAndTellIt) {
    for (const char* name : {"1.png", "2.png", "3.png", "4.png"}) {
        if (!tracker_) OpenSettled();
        Track(gallery_.AddImage(std::string("Game/") + name));
    }
    gallery_.Remove("Game/2.png");
    gallery_.Remove("Game/4.png");
    EXPECT_EQ(Ids(tracker_->GetRecentUGC(2)), "3 1 ");
    EXPECT_EQ(host_.Told(), "deleted 2 2.png, deleted 4 4.png, usage 0");
    EXPECT_EQ(Records(), "1 1.png;3 3.png;");
    gallery_.Remove("Game/3.png");
    EXPECT_EQ(IdsOfGame(), "1 ");
    EXPECT_EQ(host_.Told(), "deleted 3 3.png, usage 0");
    unsigned videos = 0;
    unsigned images = 0;
    tracker_->GetAppStats("Game", videos, images);
    EXPECT_EQ(images * 10 + videos, 10u);
    TrackedUGC none;
    EXPECT_EQ(tracker_->GetUGCData("nowhere", none).code, static_cast<int32_t>(0x80070002));
}

TEST_F(UGCTrackerTest, AUniqueFileTakesThePlaceOfTheOldOneAtTheEnd) {
    gallery_.AddImage("Game/a.png");
    OpenSettled();
    tracker_.reset();
    const std::string old = Records();
    gallery_.AddImage("Game/b.png");
    Open(true);
    ASSERT_TRUE(Step());
    EXPECT_EQ(Records(), old);
    RunDue();
    EXPECT_EQ(host_.Told(),
              "TrackerUpdateInProgress, TrackerUpdateInProgress, usage 0, TrackerUpdateComplete");
    EXPECT_EQ(File()["UGC"].Size(), 2u);
    // One that is given up leaves neither its own file nor the old one changed, and the next start no other.
    const std::string complete = Records();
    Open(true);
    ASSERT_TRUE(Step());
    tracker_.reset();
    EXPECT_EQ(Records(), complete);
    gallery_.home().Write(gallery_.ShareFile("UGCTracker_7.json"), "{}");
    Open();
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(gallery_.home() / gallery_.ShareFile("")))
        files += entry.path().filename().string().rfind("UGCTracker", 0) == 0 ? 1 : 0;
    EXPECT_EQ(files, 1u);
}

TEST_F(UGCTrackerTest, AHighlightInFlightHasItsIdAndIsCancelledWhenNothingComes) {
    OpenSettled();
    Highlight first;
    first.SetMessageBusRefid("first");
    SDKAppInfo app;
    app.profileName = "Game";
    first.SetSDKAppInfo(app);
    first.SetGroupId("group");
    first.SetEndDelta(-5000);
    Highlight second = first;
    second.SetMessageBusRefid("second");
    second.SetEndDelta(30000);
    tracker_->EnqueuePendingHighlight(first);
    tracker_->EnqueuePendingHighlight(second);
    EXPECT_EQ(IdsOfGame(), "2 1 ");
    std::vector<TrackedUGC> list(1);
    EXPECT_EQ(tracker_->GetHighlights(list, "Other", "").code, 0) << "appends";
    list.clear();
    EXPECT_EQ(tracker_->GetHighlights(list, "Other", "").code, static_cast<int32_t>(0x80070002));
    const auto start = clock_.Now();
    RunUntilTold("canceled 1");
    EXPECT_EQ(std::chrono::round<seconds>(clock_.Now() - start).count(), 60);
    RunUntilTold("canceled 2");
    EXPECT_EQ(std::chrono::round<seconds>(clock_.Now() - start).count(), 90);
}

TEST_F(UGCTrackerTest, AnAnnouncedHighlightBringsItsFieldsAndOneThatComesLaterReplacesThem) {
    OpenSettled();
    Highlight highlight;
    highlight.SetMessageBusRefid("bus");
    highlight.SetGroupId("group");
    highlight.SetHighlightDefinitionId("goal");
    highlight.SetTags(5);
    tracker_->EnqueuePendingHighlight(highlight);
    const std::string a = gallery_.AddHighlight("Game/a.mp4", R"({"HighlightId":"from file"})");
    const std::string b = gallery_.AddHighlight("Game/b.mp4");
    tracker_->Announce(a, {true, true, highlight});
    RunDue();
    EXPECT_EQ(host_.Told(), "usage 0, added 1 a.mp4, as unannounced");
    const TrackedUGC record = RecordOf(a);
    EXPECT_EQ(record.highlightDefinitionId + record.highlightGroupId, "from filegroup");
    EXPECT_EQ(record.highlightTags, 5);
    EXPECT_FALSE(tracker_->DequeuePendingHighlight(highlight));

    EXPECT_EQ(Track(b), "usage 0, added 2 b.mp4");
    highlight.SetId(9);
    tracker_->Announce(b, {true, false, highlight});
    RunDue();
    EXPECT_EQ(host_.Told(), "highlight 9 b.mp4");
    tracker_->Announce(b, {});
    EXPECT_EQ(host_.Told(), "saved 9 b.mp4");
    EXPECT_EQ(IdsOfGame(), "9 1 ");
    EXPECT_EQ(Records(), "1 a.mp4;9 b.mp4;");
    EXPECT_EQ(FilteredIds(4), "1 ");
    EXPECT_EQ(FilteredIds(2), "");

    EXPECT_EQ(tracker_->DeleteTrackedHighlightGroup("group", "Game").code, 0);
    EXPECT_EQ(host_.Told(), "deleted 1 a.mp4");
    EXPECT_FALSE(gallery_.home().Has("Videos/ZORVEX/Ovirastream/Game/a.mp4"));
    EXPECT_EQ(Records(), "9 b.mp4;");
}

// Announcements and files from both sides at once: each file is notified of as announced, once, by one side
// or by the other.
TEST_F(UGCTrackerTest, AnAnnouncementFindsTheRecordOrTheRecordTheAnnouncement) {
    UGCTracker::Parts parts;
    parts.watch = false;
    UGCTracker tracker(&host_, false, parts);
    for (int id = 1; id <= 100; ++id) {
        const std::string name = std::to_string(id) + ".mp4";
        const std::string path = gallery_.AddHighlight("Game/" + name);
        tracker.TrackFile(path);
        Highlight highlight;
        highlight.SetId(1000 + id);
        tracker.Announce(path, {true, false, highlight});
    }
    std::promise<void> done;
    tracker.queue().EnqueueNotification(tracker.queue().Now(), [&] { done.set_value(); });
    done.get_future().wait();
    tracker.Stop();
    const std::string told = host_.Told() + ", ";
    for (int id = 1; id <= 100; ++id) {
        const std::string words = std::to_string(1000 + id) + " " + std::to_string(id) + ".mp4, ";
        const bool before = told.find("added " + words + "as announced, ") != std::string::npos;
        const bool after = told.find("highlight " + words) != std::string::npos;
        EXPECT_NE(before, after) << id;
    }
}

// What the product does itself is on record at once, whatever the worker is at.
TEST_F(UGCTrackerTest, WhatTheProductDoesIsOnRecordBeforeTheWorkerRuns) {
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
    auto wait = std::async(std::launch::async, [&] {
        return tracker_->AwaitTracked(gallery_.Path("Game/later.png"), never, cancelled);
    });
    cancelled = true;
    tracker_->WakeWaiting();
    EXPECT_FALSE(wait.get());
    cancelled = false;
    wait = std::async(std::launch::async, [&] {
        return tracker_->AwaitTracked(gallery_.Path("Game/later.png"), never, cancelled);
    });
    tracker_->Stop();
    EXPECT_FALSE(wait.get());
}

TEST_F(UGCTrackerTest, CapAndDiskAreToldOnEachCrossing) {
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
    EXPECT_EQ(std::chrono::round<seconds>(clock_.Now() - start).count(), 8);
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

TEST_F(UGCTrackerTest, AGalleryThatIsGoneEndsNothing) {
    OpenSettled();
    std::filesystem::remove_all(gallery_.home() / "Videos");
    gallery_.home().Write("Videos", "as when its drive is unplugged");
    tracker_->TrackFile(gallery_.Path("Game/a.png"));
    tracker_->TrackFolder(gallery_.path());
    tracker_->UntrackFile(gallery_.path());
    RunDue();
    EXPECT_EQ(host_.Told(), "");
}

// The worker, an asking thread and the host's callbacks all at once: whoever tells, a capture's end comes
// behind its beginning.
TEST_F(UGCTrackerTest, NewsKeepTheirOrderWhateverThreadTellsThem) {
    UGCTracker::Parts parts;
    parts.watch = false;
    UGCTracker tracker(&host_, false, parts);
    host_.onTold = [&] { (void)tracker.IsTrackedFile("any"); };
    std::vector<std::string> paths;
    for (int i = 0; i < 60; ++i)
        paths.push_back(gallery_.AddImage("Game/" + std::to_string(i) + ".png"));
    for (const std::string& path : paths)
        tracker.TrackFile(path);
    size_t removed = 0;
    while (removed < 20) {
        const std::vector<TrackedUGC> list = tracker.GetRecentUGC(1);
        if (list.empty()) continue;
        std::filesystem::remove(list[0].path);
        ++removed;
        (void)tracker.GetGameUGC("Game");
    }
    tracker.Stop();
    const std::string told = host_.Told() + ",";
    size_t deleted = 0;
    for (int id = 1; id <= 60; ++id) {
        const std::string what = ' ' + std::to_string(id) + ' ';
        const size_t end = told.find("deleted" + what);
        if (end == std::string::npos) continue;
        ++deleted;
        EXPECT_LT(told.find("added" + what), end) << id;
    }
    EXPECT_EQ(deleted, 20u);
}

TEST_F(UGCTrackerTest, CaptionsAreKept) {
    OpenSettled();
    Track(gallery_.AddImage("Game/a.png"));
    EXPECT_EQ(tracker_->AddMeme(gallery_.Path("Game/a.png"), "top", "bottom").code, 0);
    EXPECT_NE(gallery_.home().Read(gallery_.ShareFile("UGCTracker.json")).find("\"top\""), std::string::npos);
    EXPECT_EQ(tracker_->AddMeme("/none.mp4", "top", "").code, static_cast<int32_t>(0x80070002));
}

}  // namespace
