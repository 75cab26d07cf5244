// The verb import over files on disk; of the plug-in it asks only where the gallery is.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>

#include "gallery-host/verbs/FollowQueue.h"
#include "sample-captures/PngImage.h"
#include "tests/host/HostRun.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TemporaryHome.h"

namespace {

class ImportVerb : public testing::Test {
  protected:
    std::string Png(const std::string& name, uint32_t size) const {
        return folder_.Write(name, samples::PngImage(size, 1, {{255, 0, 0}, {0, 0, 255}}));
    }

    TemporaryHome home_;
    const std::string gallery_ = home_ / "Videos/ZORVEX/Ovirastream";
    const TempFolder folder_;
    const bool made_ = std::filesystem::create_directories(gallery_);
};

TEST_F(ImportVerb, ReportsEachFileOnceAndGoesOn) {
    const std::string whole = Png("Tide/a.png", 4);
    Png("Tide/.hidden.png", 5);
    folder_.Write("Tide/notes.txt", "no picture");
    folder_.Write("Tide/b.png", "\x89PNG\r\n\x1A\ncut");
    Png("Tide/deep/er/c.png", 6);
    const std::string tide = folder_ / "Tide";
    const auto line = [&](const std::string& name, const std::string& destination, const char* rest) {
        return R"({"file":")" + tide + name + "\"," +
               (destination.empty() ? "" : R"("destination":")" + gallery_ + destination + "\",") + rest +
               "}\n";
    };
    const Ended dry = RunHost({"import", tide, "--dry-run"});
    EXPECT_EQ(dry.out, whole + " -> " + gallery_ + "/Tide/a.png\n" + tide + "/deep/er/c.png -> " + gallery_ +
                           "/er/c.png\n");
    EXPECT_TRUE(std::filesystem::is_empty(gallery_));

    const Ended first = RunHost({"import", tide, "--json"});
    EXPECT_EQ(first.status, 1);
    EXPECT_EQ(first.out, line("/a.png", "/Tide/a.png", R"("ok":true)") +
                             line("/b.png", "", R"("ok":false,"error":"is cut off")") +
                             line("/deep/er/c.png", "/er/c.png", R"("ok":true)"));
    EXPECT_TRUE(Contains(first.err, "2 files imported, 1 not")) << first.err;

    std::filesystem::remove(tide + "/b.png");
    const Ended again = RunHost({"import", tide, "--json", "--move"});
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(again.out, line("/a.png", "", R"("known":true,"ok":true)") +
                             line("/deep/er/c.png", "", R"("known":true,"ok":true)"));
    EXPECT_TRUE(std::filesystem::exists(whole));
}

TEST_F(ImportVerb, RefusesWhatItCannotMean) {
    ExpectEach({
        {{"import"}, 2, "PATHS"},
        {{"import", "--follow", folder_ / "none"}, 2, "--follow takes one folder"},
        {{"import", folder_.path(), "--app", "../x"}, 2, "not the name of a game's folder"},
        {{"import", folder_.path(), "--date", "2026-13-01"}, 2, "not a date"},
        {{"import", gallery_}, 1, "is in the gallery already"},
        {{"import", folder_ / "none.png"}, 1, "No such file"},
    });
    // What was imported before is unknown: rather nothing than everything once more.
    std::filesystem::create_directories(home_ / "data/ZORVEX/OvirastreamX/Share/Imported.jsonl");
    EXPECT_EQ(RunHost({"import", Png("Tide/a.png", 4)}).status, 1);
    EXPECT_TRUE(std::filesystem::is_empty(gallery_));
}

// The recorder closes its file, opens it again, and gives it its name at last.
TEST(FollowQueue, TakesAFileOnceItIsFinished) {
    using std::chrono::seconds;
    std::map<std::string, host::FileState> disk;
    host::FollowQueue queue(seconds(3), [&](const std::string& path) -> std::optional<host::FileState> {
        const auto found = disk.find(path);
        return found == disk.end() ? std::nullopt : std::optional(found->second);
    });
    const host::Deadline start{};
    const auto finished = [&](int second) { return queue.TakeFinished(start + seconds(second)); };
    EXPECT_EQ(queue.due(), host::Deadline::max());
    disk = {{"a", {1, 1, true}}, {"b", {1, 1, false}}, {"c", {1, 1, false}}};
    for (const char* name : {"a", "b", "c", "gone"})
        queue.Note(name, start);
    EXPECT_EQ(queue.due(), start + seconds(3));
    EXPECT_TRUE(finished(2).empty());
    disk["b"].size = 2;
    EXPECT_EQ(finished(3), std::vector<std::string>{"c"});
    disk["a"].isOpen = false;
    disk.erase("b");
    EXPECT_TRUE(finished(6).empty());
    EXPECT_EQ(finished(9), std::vector<std::string>{"a"});
    EXPECT_EQ(queue.due(), host::Deadline::max());
}

TEST_F(ImportVerb, FollowsAFolder) {
    const std::string old = Png("Tide/old.png", 4);
    ChildProcess child(WithFake({"import", "--follow", folder_.path(), "--json"}), {});
    ASSERT_TRUE(child.ReadErrUntil("following")) << child.err;
    const std::string part = Png("Tide/new.png.part", 5);
    std::ofstream open(folder_ / "Tide/open.png", std::ios::binary);
    open << "not finished" << std::flush;
    std::filesystem::rename(part, folder_ / "Tide/new.png");
    ASSERT_TRUE(child.ReadOutUntil("new.png\",\"ok\":true")) << child.err;
    child.Signal(SIGINT);
    EXPECT_EQ(child.Wait(), 0) << child.err;
    EXPECT_TRUE(Contains(child.out, old));
    EXPECT_FALSE(Contains(child.out, "open.png"));
}

// More lines than a pipe holds, so that it is in the middle when the signal comes.
TEST_F(ImportVerb, GoesOnAfterAnInterrupt) {
    constexpr uint32_t kFiles = 300;
    for (uint32_t i = 1; i <= kFiles; ++i)
        Png("Tide/" + std::string(200, 'n') + std::to_string(i) + ".png", i);
    const std::vector<std::string> import = {"import", folder_ / "Tide", "--json", "--move"};
    ChildProcess child(WithFake(import), {});
    ASSERT_TRUE(child.ReadOutUntil(R"("ok":true)")) << child.err;
    child.Signal(SIGINT);
    EXPECT_EQ(child.Wait(), 130);
    const auto count = [](const std::string& folder) {
        const auto files = std::filesystem::directory_iterator(folder);
        return std::distance(begin(files), end(files));
    };
    EXPECT_LT(count(gallery_ + "/Tide"), kFiles);
    EXPECT_EQ(RunHost(import).status, 0);
    EXPECT_EQ(count(gallery_ + "/Tide"), kFiles);
    EXPECT_EQ(count(folder_ / "Tide"), 0);
}

}  // namespace
