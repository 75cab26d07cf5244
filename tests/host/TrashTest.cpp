// What goes to the trash and comes back from it.
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "gallery-host/trash/Trash.h"
#include "gallery-host/trash/linux/TrashFolders.h"
#include "sample-captures/SampleGallery.h"
#include "tests/host/HostRun.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TemporaryHome.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kDate = "2026-11-22T10:00:0";

// A volume with the gallery "g" on it, reached by a link as well, and its trash.
class TrashFolderTest : public testing::Test {
  protected:
    void Put(const std::string& name, const std::string& path, int second = 0) const {
        volume_.Write("trash/files/" + name, name);
        PutInfo(name, "Path=" + path + "\nDeletionDate=" + kDate + std::to_string(second) + "\n");
    }
    void PutInfo(const std::string& name, const std::string& text) const {
        volume_.Write("trash/info/" + name + ".trashinfo", "[Trash Info]\n" + text);
    }
    std::vector<host::TrashedFile> List() const {
        return host::ListTrashed(volume_ / "link/", {{volume_ / "trash", volume_.path()}});
    }
    std::string Listed() const {
        std::string names;
        for (const host::TrashedFile& file : List())
            names += fs::path(file.file).filename().string() + " " + file.path.substr(volume_.path().size()) +
                     "\n";
        return names;
    }

    const TempFolder volume_;
    const std::string gallery_ = volume_.MakeFolder("g");
};

TEST_F(TrashFolderTest, ListsWhatWasInTheGalleryAndNothingElse) {
    fs::create_directory_symlink(gallery_, volume_ / "link");
    Put("old", "g/Race/lap%201.png", 1);
    Put("young", gallery_ + "/Race/lap%201.png", 3);
    Put("linked", (volume_ / "link") + "/%C3%A9.png", 2);
    Put("undated", "g/undated.png");
    PutInfo("undated", "Path=g/undated.png\n");
    Put("outside", "/etc/passwd");
    Put("beside", "g2/a.png");
    Put("climbs", "g/../a.png");
    Put("climbs-escaped", "g/%2e%2e/a.png");
    Put("zero", "g/a%00.png");
    Put("no-text", "g/%ff.png");
    Put("empty", "");
    PutInfo("no-file", "Path=g/gone.png\n");
    PutInfo("no-path", "DeletionDate=2026-11-22T10:00:00\n");
    Put("huge", "g/huge.png");
    PutInfo("huge", "Path=g/huge.png\n#" + std::string(100000, 'x'));
    fs::create_symlink("/etc/passwd", volume_ / "trash/files/link");
    PutInfo("link", "Path=g/link.png\n");
    fs::create_symlink("old.trashinfo", volume_ / "trash/info/other.trashinfo");
    volume_.Write("trash/files/other", "x");
    EXPECT_EQ(Listed(),
              "young /link/Race/lap 1.png\nlinked /link/\u00e9.png\nold /link/Race/lap 1.png\n"
              "undated /link/undated.png\n");
}

TEST_F(TrashFolderTest, RestoresIntoAFolderThatIsGoneAndOverNothing) {
    fs::create_directory_symlink(gallery_, volume_ / "link");
    Put("one", "g/New/Game/a.png", 1);
    Put("two", "g/New/Game/a.png", 0);
    const std::vector<host::TrashedFile> files = List();
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(host::Restore(files[0]), "");
    EXPECT_EQ(volume_.Read("g/New/Game/a.png"), "one");
    EXPECT_EQ(host::Restore(files[1]), "another file is in its place");
    EXPECT_EQ(volume_.Read("g/New/Game/a.png"), "one");
    EXPECT_EQ(Listed(), "two /link/New/Game/a.png\n");
}

// With the plug-in itself, over a gallery of samples.
TEST(Trash, BringsBackWhatWasDeletedLastOrByName) {
    const TemporaryHome home;
    const std::string gallery = home / "Videos/ZORVEX/Ovirastream/";
    samples::WriteSampleGallery(gallery);
    const std::string start = gallery + "Rustwind Rally/Start line.png";
    const std::string finish = gallery + "Rustwind Rally/Photo finish.png";
    const std::string temple = gallery + "Nine Lanterns/Temple.png";
    const auto run = [](const std::vector<std::string>& arguments) {
        ChildProcess child(arguments, {});
        const int status = child.Wait();
        return std::to_string(status) + " " + child.out;
    };
    EXPECT_EQ(run({"restore"}), "1 ");
    EXPECT_EQ(run({"rm", temple}), "0 " + temple + "\n");
    EXPECT_EQ(run({"rm", start, finish, gallery + "nothing.png"}), "1 " + start + "\n" + finish + "\n");
    EXPECT_FALSE(fs::exists(start) || fs::exists(finish) || fs::exists(temple));
    EXPECT_EQ(run({"restore", "Nine Lanterns/Temple.png", "Temple.png"}), "1 " + temple + "\n");
    EXPECT_EQ(run({"restore"}), "0 " + finish + "\n" + start + "\n");
    EXPECT_TRUE(Contains(run({"show", start}), "Rustwind Rally"));
    // What somebody deletes otherwise is a batch of its own.
    EXPECT_EQ(run({"rm", start}), "0 " + start + "\n");
    EXPECT_EQ(host::MoveToTrash(finish), "");
    const std::string later = home / "data/Trash/info/Photo finish.png.trashinfo";
    std::ofstream(later) << "[Trash Info]\nPath=" + gallery +
                                "Rustwind%20Rally/Photo%20finish.png\nDeletionDate=2126-11-22T10:00:00\n";
    EXPECT_EQ(run({"restore", "--last", "--json"}), "0 {\"file\":\"" + finish + "\",\"ok\":true}\n");
    EXPECT_EQ(run({"rm", "--permanently", finish}), "0 ");
    EXPECT_EQ(run({"restore", "--last"}), "0 " + start + "\n");
    EXPECT_EQ(run({"restore"}), "1 ");
    // Oldest first; nothing goes before one says so.
    const std::vector<std::string> clean = {"clean", "--game", "Rustwind Rally", "--to", "540kB"};
    EXPECT_EQ(run({"clean"}), "1 ") << "there is no cap";
    EXPECT_TRUE(Contains(run(clean), "0 Rustwind Rally/Start line.png "));
    EXPECT_TRUE(fs::exists(start));
    std::vector<std::string> carriedOut = clean;
    carriedOut.push_back("--yes");
    EXPECT_TRUE(Contains(run(carriedOut), "0 " + start + "\n"));
    EXPECT_TRUE(Contains(run({"restore"}), start + "\n"));
}

}  // namespace
