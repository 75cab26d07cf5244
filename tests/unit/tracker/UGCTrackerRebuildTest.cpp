// What a rebuild reads, in which order, and what it finds again of what people gave.
#include "tests/unit/tracker/UGCTrackerTest.h"

namespace fs = std::filesystem;

namespace {

// Other bytes in the same file, of the same size and time: no capture any more if somebody reads it.
void Spoil(const std::string& path) {
    const fs::file_time_type time = fs::last_write_time(path);
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file << std::string(fs::file_size(path), 'x') << std::flush;
    fs::last_write_time(path, time);
}

void MoveTo(const std::string& from, const std::string& to) {
    fs::create_directories(fs::path(to).parent_path());
    fs::rename(from, to);
}

TEST_F(UGCTrackerTest, ARebuildReadsWhatHasChangedAndBelievesItsOwnFileAlone) {
    const std::string a = gallery_.AddImage("Game/a.png");
    const std::string b = gallery_.AddImage("Game/b.png");
    const std::string c = gallery_.AddImage("Game/c.png");
    OpenSettled();
    tracker_.reset();
    for (const std::string& path : {a, b})
        Spoil(path);
    fs::last_write_time(b, fs::last_write_time(b) + std::chrono::nanoseconds(1));
    // The same bytes in another file of the same name, size and time.
    const fs::file_time_type time = fs::last_write_time(c);
    fs::copy_file(c, gallery_.Path("Game/copy"));
    Spoil(gallery_.Path("Game/copy"));
    fs::rename(gallery_.Path("Game/copy"), c);
    fs::last_write_time(c, time);
    gallery_.AddImage("Game/new.png");
    OpenSettled();
    EXPECT_EQ(Records(), "1 a.png;2 new.png;");
    EXPECT_EQ(FileCrc(), DiskCrc());
    tracker_.reset();
    const std::string file = gallery_.ShareFile("UGCTracker.json");
    gallery_.home().Write(file, gallery_.home().Read(file) + " ");
    RebuildNext();
    OpenSettled();
    EXPECT_EQ(Records(), "1 new.png;") << "the file was edited";
}

TEST_F(UGCTrackerTest, ARebuildFollowsTheTimesOfTheFilesThenTheirPaths) {
    const fs::file_time_type now = fs::file_time_type::clock::now();
    for (const auto& [name, age] : std::initializer_list<std::pair<const char*, int>>{
             {"A/new.png", 1}, {"B/old.png", 9}, {"A/same.png", 5}, {"B/same.png", 5}, {"A/z.png", 5}})
        fs::last_write_time(gallery_.AddImage(name), now - std::chrono::seconds(age));
    OpenSettled();
    EXPECT_EQ(Records(), "1 old.png;2 same.png;3 z.png;4 same.png;5 new.png;");
    EXPECT_EQ(RecordOf(gallery_.Path("B/same.png")).id, 4);
    EXPECT_EQ(Ids(tracker_->GetRecentUGC(2)), "5 4 ");
}

// What people gave follows a file by its inode or its name, to another gallery and back, and out of an old
// record where nothing was kept.
TEST_F(UGCTrackerTest, CaptionsAndHighlightsFollowMovedFiles) {
    OpenSettled();
    const std::string a = gallery_.AddImage("Game/a.png");
    const std::string b = gallery_.AddImage("Game/b.png");
    const std::string goal = gallery_.AddHighlight("Game/goal.mp4");
    Highlight highlight;
    highlight.SetGroupId("group");
    highlight.SetTags(4);
    tracker_->Announce(goal, {true, false, highlight});
    const std::string c = gallery_.AddImage("Game/c.png");
    for (const std::string& path : {a, b, c})
        Track(path);
    ASSERT_TRUE(Caption(a, "by inode") && Caption(b, "stays") && Caption(c, "by name") &&
                Caption(goal, "goal"));
    tracker_.reset();
    const std::string other = gallery_.home().MakeFolder("other");
    MoveTo(a, other + "/Game/renamed.png");
    MoveTo(goal, other + "/Game/1.mp4");
    for (const char* name : {"b.png", "c.png"}) {
        fs::copy_file(gallery_.Path(std::string("Game/") + name), other + "/Game/" + name);
        fs::last_write_time(other + "/Game/" + name,
                            fs::last_write_time(gallery_.Path(std::string("Game/") + name)));
    }
    fs::remove(c);

    Settings& settings = *host_.GetGallerySettings();
    const std::string first = settings.GetGalleryPath();
    ASSERT_TRUE(settings.SetUserGalleryPath(other));
    Open(true);
    RunDue();
    EXPECT_EQ(CaptionOf(other + "/Game/renamed.png"), "by inode");
    EXPECT_EQ(CaptionOf(other + "/Game/c.png"), "by name");
    EXPECT_EQ(CaptionOf(other + "/Game/b.png"), "") << "a copy of a file that is still there";
    EXPECT_EQ(FilteredIds(4), std::to_string(RecordOf(other + "/Game/1.mp4").id) + " ");
    ASSERT_TRUE(Caption(other + "/Game/1.mp4", "goal!"));

    tracker_.reset();
    MoveTo(other + "/Game/1.mp4", gallery_.Path("Game/2.mp4"));
    ASSERT_TRUE(settings.SetUserGalleryPath(first));
    Open(true);
    RunDue();
    EXPECT_EQ(CaptionOf(b), "stays") << "its gallery was away and is chosen again";
    EXPECT_EQ(CaptionOf(gallery_.Path("Game/2.mp4")), "goal!");
    for (const bool edited : {false, true}) {
        tracker_.reset();
        const std::string file = gallery_.ShareFile("UGCTracker.json");
        if (edited) gallery_.home().Write(file, gallery_.home().Read(file) + " ");
        fs::remove(gallery_.home() / gallery_.ShareFile("UGCKept.jsonl"));
        RebuildNext();
        OpenSettled();
        EXPECT_EQ(CaptionOf(b), "stays") << edited;
        EXPECT_EQ(FilteredIds(4), std::to_string(RecordOf(gallery_.Path("Game/2.mp4")).id) + " ");
    }
}

// An unplugged drive leaves the folder that it was mounted on.
TEST_F(UGCTrackerTest, AnEmptiedGalleryIsNeverWrittenWithTheSumOfAFullOne) {
    const std::string a = gallery_.AddImage("Game/a.png");
    OpenSettled();
    ASSERT_TRUE(Caption(a, "caption"));
    fs::rename(gallery_.path(), gallery_.home() / "unplugged");
    fs::create_directory(gallery_.path());
    EXPECT_EQ(IdsOfGame(), "");
    EXPECT_EQ(host_.Told(), "deleted 1 a.png, usage 0");
    EXPECT_EQ(Records(), "");
    EXPECT_NE(FileCrc(), DiskCrc()) << "nor with its own: nobody has looked into the folder";
    fs::remove(gallery_.path());
    fs::rename(gallery_.home() / "unplugged", gallery_.path());
    // A write before its watcher has seen it.
    tracker_->NoteDisturbed(gallery_.path());
    RunDue(*tracker_, std::chrono::milliseconds(2000));
    EXPECT_EQ(Records(), "");
    EXPECT_NE(FileCrc(), DiskCrc());
    // As its watcher does.
    tracker_->TrackFolder(gallery_.path());
    RunDue();
    RunDue();
    EXPECT_EQ(CaptionOf(a), "caption");
    EXPECT_EQ(host_.Told(), "");
    EXPECT_EQ(FileCrc(), DiskCrc());
}

}  // namespace
