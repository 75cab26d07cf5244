#include <map>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "base/FolderReader.h"
#include "tests/support/TempFolder.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;

TEST(FolderReaderTest, TellsFoldersFromLinksToThem) {
    const TempFolder folder;
    folder.MakeFolder("folder");
    folder.Write("b\xFF", "");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    fs::create_symlink("folder", folder / "link");
    fs::create_symlink("nowhere", folder / "dangling");
    FolderReader reader(folder.path());
    std::map<std::string, std::pair<EntryKind, bool>> found;
    while (reader.Next())
        found[reader.Name()] = {reader.Kind(), reader.IsFolder()};
    EXPECT_EQ(found, (std::map<std::string, std::pair<EntryKind, bool>>{
                         {"folder", {EntryKind::Folder, true}},
                         {"pipe", {EntryKind::Other, false}},
                         {"link", {EntryKind::Folder, false}},
                         {"dangling", {EntryKind::Unreachable, false}},
                     }));
    EXPECT_EQ(reader.illegible(), 1);
    EXPECT_EQ(reader.error(), 0);
    FolderReader all(folder.path());
    int count = 0;
    while (all.NextOfAll())
        ++count;
    EXPECT_EQ(count, 7) << "with \".\" and \"..\"";
    EXPECT_TRUE(FolderReader(folder / "link").IsOpen());
    EXPECT_FALSE(FolderReader(folder / "link", Links::Refuse).IsOpen());
    EXPECT_FALSE(FolderReader(folder / "pipe").Next());
}

}  // namespace
}  // namespace KXP
