// Highlights and announcements, the lists of captures, and the order of the notifications.
#include <future>

#include "tests/unit/tracker/UGCTrackerTest.h"

namespace {

using std::chrono::seconds;

TEST_F(UGCTrackerTest, APendingHighlightHasItsIdAndIsCanceledInTime) {
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

TEST_F(UGCTrackerTest, AnAnnouncedHighlightBringsItsFieldsAndALaterOneReplacesThem) {
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
    EXPECT_EQ(record.highlightDefinitionId, "from file");
    EXPECT_EQ(record.highlightGroupId, "group");
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
TEST_F(UGCTrackerTest, EveryAnnouncementMeetsItsRecordOnce) {
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

TEST_F(UGCTrackerTest, ListsDropMissingFilesAndNotifyIt) {
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
    TrackedUGC none;
    EXPECT_EQ(tracker_->GetUGCData("nowhere", none).code, static_cast<int32_t>(0x80070002));
}

// The worker, an asking thread and the host's callbacks all at once: whoever tells, a capture's end comes
// behind its beginning.
TEST_F(UGCTrackerTest, NotificationsKeepTheirOrderAcrossThreads) {
    UGCTracker::Parts parts;
    parts.watch = false;
    UGCTracker tracker(&host_, false, parts);
    host_.onTold = [&] { (void)tracker.IsTrackedFile("any"); };
    std::vector<std::string> paths;
    paths.reserve(60);
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

}  // namespace
