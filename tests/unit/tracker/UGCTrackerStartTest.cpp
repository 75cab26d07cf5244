// How the tracker starts: from its file, or by a rebuild of it, what a rebuild reads, and what it finds again
// of what people gave.
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

TEST_F(UGCTrackerTest, ARebuildFindsTheOwnFilesOfGameFoldersSilently) {
    gallery_.AddImage("Game/a.png");
    gallery_.AddHighlight("Game/b.mp4");
    gallery_.AddImage("top.png");
    gallery_.AddImage("Game/deep/c.png");
    gallery_.AddImage(".hidden/d.png");
    gallery_.Add("Game/foreign.png", captures::Png(""));
    fs::create_symlink(gallery_.Path("Game"), gallery_.Path("Link"));
    fs::create_symlink(gallery_.Path("Game"), gallery_.Path("Game/Loop"));
    Open();
    EXPECT_EQ(host_.GetGallerySettings()->GetTrackerUpdateState(), TrackerUpdateInProgress);
    RunDue();
    EXPECT_EQ(host_.Told(), "");
    EXPECT_EQ(host_.GetGallerySettings()->GetTrackerUpdateState(), TrackerUpdateComplete);
    const TrackedUGC image = RecordOf(gallery_.Path("Game/a.png"));
    const TrackedUGC video = RecordOf(gallery_.Path("Game/b.mp4"));
    EXPECT_EQ(std::string(image.profileName) + std::string(image.fileType) + std::string(image.fileSource),
              "GameimageOVS_Share");
    EXPECT_EQ(video.msDuration, 2000u);
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

TEST_F(UGCTrackerTest, AUniqueFileReplacesTheOldOneAtTheEnd) {
    const std::string a = gallery_.AddImage("Game/a.png");
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
    tracker_.reset();
    const std::string complete = Records();
    EXPECT_EQ(complete, "1 a.png;2 b.png;");
    Spoil(a);
    RebuildNext();
    OpenSettled();
    EXPECT_EQ(Records(), complete) << "its stamps came along";
    // One that is given up leaves neither its own file nor the old one changed, and the next start no other.
    const auto files = [&] {
        size_t count = 0;
        for (const auto& entry : fs::directory_iterator(gallery_.home() / gallery_.ShareFile("")))
            count += entry.path().filename().string().rfind("UGCTracker", 0) == 0 ? 1 : 0;
        return count;
    };
    Open(true);
    ASSERT_TRUE(Step());
    tracker_.reset();
    EXPECT_EQ(Records(), complete);
    EXPECT_EQ(files(), 2u) << "the record and its stamps";
    for (const char* name : {"UGCTracker_7.json", "UGCTracker_7.stamps"})
        gallery_.home().Write(gallery_.ShareFile(name), "{}");
    Open();
    EXPECT_EQ(files(), 2u);
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
