// Files and folders that cannot be read for a while, writes that fail, and a stop right after a change.

#include <unistd.h>

#include "plugin-modules/Gallery/src/tracker/RebuildPlan.h"
#include "tests/support/Counter.h"
#include "tests/support/DescriptorLimit.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/unit/tracker/UGCTrackerTest.h"

namespace fs = std::filesystem;
using std::chrono::seconds;

namespace {

TEST_F(UGCTrackerTest, WhatCouldNotBeReadIsLookedAtAgain) {
    SKIP_WHERE_DESCRIPTORS_ARE_NEEDED();
    OpenSettled();
    Track(gallery_.AddImage("Game/known.png"));
    const std::string known = gallery_.Path("Game/known.png");
    // For how long nothing can be read, and when the capture is found.
    for (const auto& [unreadable, found] : {std::pair(4, 5), {6, 35}, {36, 95}, {96, 155}}) {
        log_.Clear();
        const auto start = clock_.Now();
        const std::string path = gallery_.AddImage("Game/" + std::to_string(found) + ".png");
        fs::last_write_time(known, fs::last_write_time(known) - seconds(1));
        {
            const DescriptorLimit none;
            tracker_->TrackFile(path);
            tracker_->TrackFile(known);
            RunDue(*tracker_, seconds(unreadable));
        }
        EXPECT_TRUE(tracker_->IsTrackedFile(known));
        EXPECT_EQ(log_.Count(path + " could not be read, and will be looked at again"), 1);
        EXPECT_EQ(log_.Count("looked at again"), 2);
        EXPECT_NE(FileCrc(), DiskCrc());
        for (int steps = 0; steps < 500 && !tracker_->IsTrackedFile(path); ++steps)
            ASSERT_TRUE(Step());
        EXPECT_EQ(std::chrono::round<seconds>(clock_.Now() - start).count(), found);
        RunDue(*tracker_, seconds(2));
        EXPECT_EQ(FileCrc(), DiskCrc());
    }
}

TEST_F(UGCTrackerTest, AFolderThatCannotBeReadLosesNoRecord) {
    SKIP_WHERE_DESCRIPTORS_ARE_NEEDED();
    OpenSettled();
    const std::string a = gallery_.AddImage("Game/a.png");
    Track(a);
    Track(gallery_.AddImage("Other/b.png"));
    const std::string late = gallery_.AddImage("Game/late.png");
    {
        // The gallery can be opened, its games cannot.
        const int next = dup(0);
        close(next);
        const DescriptorLimit few(static_cast<rlim_t>(next) + 1);
        tracker_->TrackFolder(gallery_.path());
        RunDue();
        EXPECT_EQ(log_.Count("looked at again"), 2);
    }
    EXPECT_EQ(Ids(tracker_->GetRecentUGC(9)), "2 1 ");
    Track(gallery_.AddImage("Third/c.png"));
    EXPECT_NE(FileCrc(), DiskCrc()) << "the folders may hold more";
    RunDue(*tracker_, seconds(8));
    EXPECT_TRUE(tracker_->IsTrackedFile(late));
    EXPECT_EQ(host_.Told(), "usage 0, added 4 late.png");
    EXPECT_EQ(FileCrc(), DiskCrc());
}

TEST(RebuildPlan, TakesWhatIsUnchangedOrCouldNotBeReadFromTheOwnFile) {
    // By the time of the file; those of the same time by path. "g/x" was edited by hand to be there twice.
    const std::vector<FoundFile> files = {{"g/new", {1, 20, 7}},    {"g/same", {1, 10, 1}},
                                          {"g/longer", {5, 30, 3}}, {"g/later", {1, 99, 4}},
                                          {"g/x", {1, 10, 5}},      {"g/elsewhere", {1, 40, 8}}};
    const auto plan = [&](bool own, bool keepsInodes) {
        RebuildPlan::Former former;
        former.isOwn = own;
        for (const FoundFile& file : std::vector<FoundFile>{{"g/x", {1, 10, 5}},
                                                            {"g/x", {1, 10, 5}},
                                                            {"g/same", {1, 10, 1}},
                                                            {"g/longer", {1, 30, 3}},
                                                            {"g/later", {1, 11, 4}},
                                                            {"g/gone", {1, 50, 9}},
                                                            {"g/elsewhere", {1, 40, 6}},
                                                            {"h/unread", {1, 35, 2}}}) {
            former.records.push_back(std::make_shared<TrackedUGC>());
            former.records.back()->path = file.path;
            former.records.back()->id = static_cast<int>(former.records.size());
            if (own) former.records.back()->stamp = file.stamp;
        }
        RebuildPlan made({files, {"h"}}, std::move(former), keepsInodes);
        std::string text;
        while (const auto step = made.Next())
            text += step->path + (step->unchanged ? "=" : "") +
                    (step->former ? std::to_string(step->former->id) : "") + " ";
        return text;
    };
    EXPECT_EQ(plan(true, true), "g/same=3 g/x=1 g/new g/longer h/unread=8 g/elsewhere g/later ");
    EXPECT_EQ(plan(true, false), "g/same=3 g/x=1 g/new g/longer h/unread=8 g/elsewhere=7 g/later ");
    EXPECT_EQ(plan(false, true), "g/same3 g/x1 g/new g/longer4 g/elsewhere7 g/later5 ");
}

TEST_F(UGCTrackerTest, CaptionsThatCannotBeWrittenLeaveTheOldOnes) {
    OpenSettled();
    const std::string a = gallery_.AddImage("Game/a.png");
    const std::string none = gallery_.AddImage("Game/none.png");
    Track(a);
    Track(none);
    EXPECT_EQ(tracker_->AddMeme("/none.mp4", "top", "").code, static_cast<int32_t>(0x80070002));
    ASSERT_TRUE(Caption(a, "old"));
    const std::string kept = gallery_.ShareFile("UGCKept.jsonl");
    const std::string file = gallery_.home() / gallery_.ShareFile("UGCTracker.json");
    const auto fails = [&](const std::string& reason) {
        for (const std::string& path : {a, none}) {
            const KXP::RetVal written = tracker_->AddMeme(path, "new", "");
            EXPECT_EQ(written.code, static_cast<int32_t>(0x80004005));
            EXPECT_EQ(written.text, reason);
            EXPECT_EQ(CaptionOf(path), path == a ? "old" : "");
        }
    };
    {
        const FileSizeLimit full(0);
        fails("File too large");
    }
    const std::string record = gallery_.home().Read(gallery_.ShareFile("UGCTracker.json"));
    fs::remove(file);
    fs::create_directory(file);
    fails("Failed to open file");
    fs::remove(file);
    for (const bool rebuilt : {false, true}) {
        if (!rebuilt) gallery_.home().Write(gallery_.ShareFile("UGCTracker.json"), record);
        if (rebuilt) RebuildNext();
        OpenSettled();
        EXPECT_EQ(CaptionOf(a) + CaptionOf(none), "old");
    }
}

// With the real clock and watcher, whose window is still open at the stop.
TEST_F(UGCTrackerTest, AStopEntersWhatIsKnown) {
    const std::string a = gallery_.AddImage("Game/a.png");
    const std::string gone = gallery_.AddImage("Game/gone.png");
    for (int round = 0; round < 3; ++round) {
        log_.Clear();
        UGCTracker tracker(&host_, false);
        ASSERT_TRUE(Soon([&] { return round > 0 || log_.Has("Tracker update done"); }));
        if (round == 1) {
            gallery_.AddImage("Game/b.png");
            gallery_.AddImage("New/c.png");
            gallery_.Remove("Game/gone.png");
            gallery_.Add("Game/foreign.txt", "text");
            gallery_.AddImage("top.png");
        }
        tracker.Stop();
        EXPECT_EQ(FileCrc(), DiskCrc()) << round;
        EXPECT_EQ(log_.Has("rebuilding"), round == 0);
        EXPECT_EQ(tracker.GetRecentUGC(9).size(), round == 0 ? 2u : 3u);
    }
    EXPECT_FALSE(tracker_);
}

// A capture is a regular file; a link to one is none, however it comes.
TEST_F(UGCTrackerTest, LinksAreNoCaptures) {
    const std::string a = gallery_.AddImage("Game/a.png");
    const std::string link = gallery_.Path("Game/link.png");
    fs::create_symlink(a, link);
    OpenSettled();
    tracker_->TrackNow(link);
    tracker_->Announce(link, {});
    tracker_->TrackFile(link);
    tracker_->TrackFolder(gallery_.Path("Game"));
    RunDue();
    RunDue();
    EXPECT_EQ(host_.Told(), "");
    EXPECT_EQ(Records(), "1 a.png;");
    fs::rename(a, gallery_.home() / "a.png");
    fs::create_symlink(gallery_.home() / "a.png", a);
    EXPECT_EQ(Track(a), "deleted 1 a.png, usage 0") << "one took the place of a capture";
    EXPECT_EQ(FileCrc(), DiskCrc());
}

}  // namespace
