// Ids: no two captures share one and none is given twice, whoever chooses them.
#include <set>

#include "tests/unit/tracker/UGCTrackerTest.h"

namespace {

TEST_F(UGCTrackerTest, AToldIdIsTakenOnlyIfItIsFree) {
    OpenSettled();
    Highlight inFlight;
    inFlight.SetMessageBusRefid("other");
    tracker_->EnqueuePendingHighlight(inFlight);
    Track(gallery_.AddImage("Game/a.png"));
    ASSERT_EQ(inFlight.GetId(), 1);
    std::set<int32_t> ids{1, RecordOf(gallery_.Path("Game/a.png")).id};
    for (const bool early : {false, true}) {
        for (const int32_t told : {0, -1, INT32_MIN, 1, 2, early ? 41 : 40, INT32_MAX}) {
            const std::string name = std::to_string(ids.size());
            const std::string path = gallery_.AddHighlight("Game/" + name + ".mp4");
            if (!early) Track(path);
            Highlight highlight;
            highlight.SetMessageBusRefid(name);
            highlight.SetId(told);
            const bool free = told > 0 && ids.count(told) == 0;
            tracker_->Announce(path, {true, false, highlight});
            RunDue();
            const int32_t id = RecordOf(path).id;
            EXPECT_GT(id, 0) << told;
            EXPECT_TRUE(ids.insert(id).second) << id << " for " << told;
            EXPECT_EQ(id == told, free) << told;
            EXPECT_GE(File()["info"]["lastUGCIdUsed"].GetInt(), *ids.rbegin()) << told;
        }
    }
    EXPECT_EQ(tracker_->GetGameUGC("Game").size(), ids.size() - 1) << "none hides another";
}

// Hangs in NewId, with the tracker's mutex held.
TEST_F(UGCTrackerTest, AfterTheLastIdTheLowestFreeOneIsGiven) {
    OpenSettled();
    const std::string a = gallery_.AddHighlight("Game/a.mp4");
    Highlight highlight;
    highlight.SetId(INT32_MAX);
    tracker_->Announce(a, {true, false, highlight});
    RunDue();
    for (const char* reference : {"first", "second"}) {
        highlight.SetMessageBusRefid(reference);
        tracker_->EnqueuePendingHighlight(highlight);
    }
    EXPECT_EQ(highlight.GetId(), 2);
}

TEST_F(UGCTrackerTest, TheIdOfAHighlightInFlightStaysItsOwn) {
    const auto last = [this] { return File()["info"]["lastUGCIdUsed"].GetInt(); };
    OpenSettled();
    Highlight highlight;
    for (int id = 1; id <= 3; ++id)
        tracker_->EnqueuePendingHighlight(highlight);
    tracker_.reset();
    EXPECT_EQ(last(), 3);
    // Through a move of the gallery, whose ids start again.
    gallery_.AddImage("Game/a.png");
    Open(true);
    RunDue();
    EXPECT_EQ(Records(), "1 a.png;");
    EXPECT_EQ(last(), 3);
    const std::string b = gallery_.AddHighlight("Game/b.mp4");
    tracker_->Announce(b, {true, false, highlight});
    RunDue();
    EXPECT_EQ(Records(), "1 a.png;3 b.mp4;");
    // In the next process it is not in flight any more.
    tracker_->EnqueuePendingHighlight(highlight);
    tracker_.reset();
    (void)host_.GetPendingHighlights().Dequeue(highlight);
    OpenSettled();
    Track(gallery_.AddImage("Game/c.png"));
    EXPECT_EQ(Records(), "1 a.png;3 b.mp4;5 c.png;");
}

// In a file that somebody has edited.
TEST_F(UGCTrackerTest, WrongAndDoubledIdsAreMended) {
    for (const char* name : {"Game/1.png", "Game/2.png", "Other/3.png", "Other/4.png"}) {
        if (!tracker_) OpenSettled();
        Track(gallery_.AddImage(name));
    }
    tracker_.reset();
    const std::string good = gallery_.home().Read(gallery_.ShareFile("UGCTracker.json"));
    for (const auto& [last, ids] : {std::pair("4", "5 1 7 6 "), {"-1", "2 1 4 3 "}}) {
        tracker_.reset();
        std::string text = good;
        for (const char* id : {"2", "3", "4"})
            text.replace(text.find(std::string("\"id\": ") + id) + 6, 1, *id == '4' ? "0" : "1");
        text.replace(text.find("Used\": ") + 7, 1, last);
        gallery_.home().Write(gallery_.ShareFile("UGCTracker.json"), text);
        log_.Clear();
        OpenSettled();
        EXPECT_FALSE(log_.Has("rebuilding"));
        EXPECT_EQ(IdsOfGame() + Ids(tracker_->GetGameUGC("Other")), ids);
    }
}

}  // namespace
