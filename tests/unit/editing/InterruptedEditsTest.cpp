// What a process that was killed during a trim leaves, and what the next start makes of it.
#include <map>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "plugin-modules/Gallery/src/editing/EditNote.h"
#include "plugin-modules/Gallery/src/editing/InterruptedEdits.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

class InterruptedEdits : public testing::Test {
  protected:
    using Files = std::map<std::string, std::string>;  // by name, with their content

    static FileStamp Stamp(const std::string& path) {
        struct stat status {};
        return lstat(path.c_str(), &status) == 0 ? StampOf(status) : FileStamp{};
    }
    void Do(const std::string& step, EditNote& note) const {
        if (step == "cut") folder_.Write("game/a_tmp2.mp4", "new");
        if (step == "noted" && !note.SetWhole(Stamp(capture_), Stamp(clip_))) _exit(1);
        if (step == "placed") fs::rename(clip_, capture_);
        if (step == "capture deleted") fs::remove(capture_);
        if (step == "capture changed") folder_.Write("game/a.mp4", "newest");
        if (step == "clip exchanged") fs::rename(folder_.Write("b.mp4", "other"), clip_);
    }
    // Somebody's file is at the first clip's path.
    void Killed(const std::vector<std::string>& steps) const {
        fs::remove_all(folder_ / "game");
        folder_.Write("game/a.mp4", "old");
        folder_.Write("game/a_tmp.mp4", "mine");
        const pid_t child = fork();
        if (child == 0) {
            EditNote note(share_, capture_, 2);
            for (const std::string& step : steps)
                Do(step, note);
            _exit(!note.IsOpen());
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0);
    }
    // What the next start leaves.
    Files Finish() const {
        FinishInterruptedEdits(share_);
        Files files;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder_ / "game"))
            files[entry.path().filename()] = folder_.Read("game/" + entry.path().filename().string());
        EXPECT_EQ(files.extract("a_tmp.mp4").mapped(), "mine");
        return files;
    }

    const TempFolder folder_;
    const std::string share_ = folder_.MakeFolder("share");
    const std::string capture_ = folder_ / "game/a.mp4";
    const std::string clip_ = folder_ / "game/a_tmp2.mp4";
};

TEST_F(InterruptedEdits, LeaveTheOldOrTheNewFile) {
    const std::vector<std::pair<std::vector<std::string>, Files>> cases = {
        {{}, {{"a.mp4", "old"}}},
        {{"cut"}, {{"a.mp4", "old"}}},
        {{"cut", "noted"}, {{"a.mp4", "new"}}},
        {{"cut", "noted", "placed"}, {{"a.mp4", "new"}}},
        {{"cut", "noted", "capture deleted"}, {{"a.mp4", "new"}}},
        {{"cut", "noted", "capture changed"}, {{"a.mp4", "newest"}}},
        {{"cut", "noted", "clip exchanged"}, {{"a.mp4", "old"}, {"a_tmp2.mp4", "other"}}}};
    for (const auto& [steps, left] : cases) {
        SCOPED_TRACE(testing::PrintToString(steps));
        Killed(steps);
        // A start without the drive.
        fs::rename(folder_ / "game", folder_ / "away");
        FinishInterruptedEdits(share_);
        fs::rename(folder_ / "away", folder_ / "game");
        EXPECT_EQ(Finish(), left);
        EXPECT_TRUE(fs::is_empty(share_));
    }
    const EditNote alive(share_, capture_, 2);
    EXPECT_EQ(Finish().count("a_tmp2.mp4"), 1u);
}

TEST_F(InterruptedEdits, AnEditedNoteTouchesNothingElse) {
    Killed({"cut"});
    const std::string note = fs::directory_iterator(share_)->path();
    const std::string file = "{\"file\":\"" + capture_ + "\",\"attempt\":";
    // As if the clip were older than the note.
    const std::string later = file + "2,\"begun\":" + std::to_string(std::time(nullptr) + 1000) + "}\n";
    const std::string valid = file + "2,\"begun\":0}\n";
    for (const std::string& text : {std::string("[]\n"), later, file + "0,\"begun\":0}\n",
                                    file + "2,\"begun\":0}", file + "\"2\",\"begun\":0}\n", valid}) {
        std::ofstream(note) << text;
        EXPECT_EQ(Finish().size(), text == valid ? 1u : 2u) << text;
        EXPECT_TRUE(fs::is_empty(share_)) << text;
    }
}

}  // namespace
