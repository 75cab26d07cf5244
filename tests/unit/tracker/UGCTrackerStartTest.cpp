// How the tracker starts: from its file, or by a rebuild of it.
#include "tests/unit/tracker/UGCTrackerTest.h"

namespace {

TEST_F(UGCTrackerTest, ARebuildFindsTheOwnFilesOfGameFoldersSilently) {
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

TEST_F(UGCTrackerTest, AUniqueFileReplacesTheOldOneAtTheEnd) {
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
    for (const char* name : {"UGCTracker_7.json", "UGCTracker_7.stamps"})
        gallery_.home().Write(gallery_.ShareFile(name), "{}");
    Open();
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(gallery_.home() / gallery_.ShareFile("")))
        files += entry.path().filename().string().rfind("UGCTracker", 0) == 0 ? 1 : 0;
    EXPECT_EQ(files, 2u) << "the record and its stamps";
}

}  // namespace
