#include <filesystem>
#include <fstream>
#include <random>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "plugin-modules/Gallery/src/media/FolderCrc.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

struct TreeData {
    std::vector<unsigned char> times;
    std::string folders, lastFile;
};

TreeData Walk(const std::string& path, const std::string& galleryPath = "") {
    std::vector<unsigned char> times, folders, lastFile;
    EXPECT_TRUE(media::GetTreeData(path, galleryPath, times, folders, lastFile));
    return {times, {folders.begin(), folders.end()}, {lastFile.begin(), lastFile.end()}};
}

constexpr unsigned int kUnchanged = 0xFFFFFFFF;

unsigned int Sum(const std::string& path, const std::string& galleryPath = "") {
    unsigned int crc = kUnchanged;
    media::CalculateFolderCRC(path, galleryPath, crc);
    return crc;
}

void SetTime(const std::string& path, time_t seconds) {
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

}  // namespace

TEST(FolderCrc, IsTheUsualCrc) {
    EXPECT_EQ(media::StringCRC("123456789"), 0xCBF43926u);
    EXPECT_EQ(media::StringCRC(""), 0u);
}

TEST(FolderCrc, HoldsTimesFolderNamesAndOneFile) {
    const TempFolder folder;
    folder.Write("gallery/a", "");
    folder.Write("gallery/sub/x\xFF", "");
    folder.Write("gallery/.hidden/y", "");
    const std::string gallery = folder / "gallery";
    SetTime(gallery, -2);
    const TreeData data = Walk(gallery);
    EXPECT_EQ(data.folders, gallery + "sub");
    EXPECT_EQ(data.lastFile, gallery + "/sub/x\xFF");
    // Its own, five in it (with "." and "..") and three in the folder below.
    ASSERT_EQ(data.times.size(), 9u * 8);
    EXPECT_EQ(data.times[0], 0xFE);
    EXPECT_EQ(data.times[7], 0xFF);
    const TreeData asRoot = Walk(gallery, gallery);
    EXPECT_EQ(asRoot.times, std::vector<unsigned char>(data.times.begin() + 8, data.times.end()));
    const LogCapture log;
    const unsigned int sum = Sum(gallery);
    EXPECT_EQ(sum, media::CRC(data.times.begin(), data.times.end()) + media::StringCRC(data.folders) +
                       media::StringCRC(data.lastFile) + media::StringCRC(gallery));
    EXPECT_TRUE(log.Has("Files: 9 Dir size: " + std::to_string(data.folders.size()) +
                        " CRC: " + std::to_string(sum)));
    EXPECT_NE(Sum(gallery, gallery), sum);
    EXPECT_NE(Sum(folder.MakeFolder("empty")), kUnchanged);
}

TEST(FolderCrc, WalksTheFolderFoundLastFirst) {
    const TempFolder folder;
    for (const char* name : {"a/1/file", "b/2/file", "c/3/file"})
        folder.Write(name, ""), folder.Write(name + std::string("2"), "");
    std::string names = folder.path();
    std::string below;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        names += entry.path().filename();
        below.insert(0, fs::directory_iterator(entry.path())->path().filename());
    }
    const TreeData data = Walk(folder.path());
    EXPECT_EQ(data.folders, names + below);
    const fs::path last = data.lastFile;
    EXPECT_EQ(last.parent_path().filename(), below.substr(2)) << "walked last";
    EXPECT_EQ(last, fs::directory_iterator(last.parent_path())->path()) << "the first of its folder";
}

TEST(FolderCrc, LinksToFoldersCountAsFiles) {
    const TempFolder folder;
    folder.Write("aim/deep/file", "");
    const std::string gallery = folder.MakeFolder("gallery");
    fs::create_directory_symlink(gallery, gallery + "/loop");
    EXPECT_EQ(Walk(gallery).folders, gallery);
    EXPECT_EQ(Walk(gallery).lastFile, gallery + "/loop");
    fs::remove(gallery + "/loop");
    fs::create_directory_symlink(folder / "aim", gallery + "/aim");
    const unsigned int before = Sum(gallery);
    SetTime(folder / "aim", 1000);
    EXPECT_NE(Sum(gallery), before) << "the time is that of what the link leads to";
    EXPECT_EQ(Walk(gallery + "/aim").folders, gallery + "/aimdeep") << "the root may be a link";
}

TEST(FolderCrc, AFailedWalkKeepsTheValueAndNamesTheEntryOnce) {
    const TempFolder folder;
    const std::string file = folder.Write("file", "");
    fs::create_symlink("nowhere", folder.MakeFolder("gallery") + "/lost");
    struct {
        std::string path, line, named;
    } const cases[] = {
        {folder / "gallery", "KXP::FileTime error -2147024894", folder / "gallery/lost"},
        {file, "GetTreeData: invalid file handle", file},
        {folder.path() + std::string("\0x", 2), "GetTreeData: invalid file handle", folder.path()},
        {"", "GetTreeData: invalid file handle", "The folder"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.path);
        const LogCapture log;
        EXPECT_EQ(Sum(row.path), kUnchanged);
        EXPECT_TRUE(log.HasLine(2, row.line));
        EXPECT_TRUE(log.HasLine(2, "GetTreeData had an error, returning CRC:-1"));
        EXPECT_EQ(log.Count("][1]["), 1);
        EXPECT_EQ(log.Count(row.named), 1);
    }
    media::FolderTree tree(media::FolderTree::LostLinks::Count);
    ASSERT_TRUE(tree.Read(folder / "gallery"));
    EXPECT_TRUE(tree.HasLinks());
    unsigned int lost = kUnchanged, found = kUnchanged;
    media::SumTree(tree, "", lost);
    folder.Write("gallery/nowhere", "");
    SetTime(folder / "gallery/nowhere", 1000);
    ASSERT_TRUE(tree.Update({folder / "gallery/nowhere"}));
    media::SumTree(tree, "", found);
    EXPECT_EQ(found, Sum(folder / "gallery")) << "the same as without any that is lost";
    EXPECT_NE(found, lost);
}

TEST(FolderTree, AnUpdateSumsWhatAWholeReadingSums) {
    const TempFolder home;
    const LogCapture quiet;
    const std::string gallery = home.MakeFolder("gallery");
    const std::string outside = home.Write("outside", "");
    std::mt19937 random(1);
    const auto below = [&random](size_t count) { return random() % count; };
    const auto somePath = [&] {
        std::string path = gallery;
        for (size_t left = 1 + below(3); left > 0; --left)
            path += std::vector<std::string>{"/a", "/b", "/c", "/.d"}[below(4)];
        return path;
    };
    std::error_code ignored;
    const auto changeFolder = [&](const std::string& path, const std::string& other) {
        if (below(6) == 0) fs::remove_all(path, ignored);
        if (below(3) == 0) fs::rename(other, path, ignored);
        if (below(6) == 0) fs::create_symlink(outside, path, ignored);
        if (below(2) == 0) fs::create_directory(path, ignored);
    };
    const auto changeFile = [&](const std::string& path) {
        if (below(3) == 0) fs::remove(path, ignored);
        if (below(6) == 0) fs::create_hard_link(outside, path, ignored);
        const timespec times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(below(1000)), 0}};
        if (below(3) > 0) std::ofstream(path) << "bytes";
        utimensat(AT_FDCWD, path.c_str(), times, 0);
    };
    media::FolderTree tree;
    int updates = 0;
    for (int round = 0; round < 1000; ++round) {
        std::vector<std::string> changed;
        for (size_t left = below(3); left > 0; --left) {
            const std::string path = somePath(), other = somePath();
            const std::string file = path + "/" + std::to_string(below(9));
            const bool ofFolder = below(8) == 0;
            ofFolder ? changeFolder(path, other) : changeFile(file);
            changed.insert(changed.end(), {ofFolder ? path : file, ofFolder ? other : file});
        }
        // Named by nobody: what links lead to, and the folder around the gallery.
        SetTime(outside, round);
        SetTime(home.path(), round);
        unsigned int updated = kUnchanged, whole = kUnchanged;
        tree.Update(changed) ? ++updates : tree.Read(gallery);
        media::SumTree(tree, gallery, updated);
        media::CalculateFolderCRC(gallery, gallery, whole);
        ASSERT_EQ(updated, whole) << round;
    }
    EXPECT_GT(updates, 990);
    fs::rename(gallery, home / "away");
    fs::create_directory(gallery);
    EXPECT_FALSE(tree.Update({})) << "another folder";
}
