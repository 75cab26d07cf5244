#include <array>
#include <map>
#include <stdexcept>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "base/FileCalls.h"
#include "base/FolderReader.h"
#include "base/Path.h"
#include "base/Text.h"
#include "tests/support/TempFolder.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;

TEST(FolderReader, DistinguishesFoldersFromLinksToThem) {
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
    for (const char* none : {"pipe", "dangling", "nowhere"})
        EXPECT_FALSE(Platform::IsKnownFolder(folder / none)) << none;
    EXPECT_FALSE(FolderReader(folder / "link", Links::Refuse).IsOpen());
    EXPECT_FALSE(FolderReader(folder / "pipe").Next());
}

TEST(Text, ConversionIsStrict) {
    for (const char* bad : {"\x80", "\xC0\x80", "\xC3", "\xE2\x82", "\xE0\x80\x80", "\xED\xA0\x80",
                            "\xF0\x80\x80\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "12345678\xFF"}) {
        EXPECT_FALSE(IsValidUtf8(bad));
        EXPECT_THROW(Utf8ToWide(bad), std::range_error);
    }
    EXPECT_THROW(WideToUtf8(std::wstring(1, static_cast<wchar_t>(0xD800))), std::range_error);
    EXPECT_THROW(WideToUtf8(std::wstring(1, static_cast<wchar_t>(0x110000))), std::range_error);
    const std::string every = "a\u00E9\u20AC\U0001F3AE";
    EXPECT_EQ(WideToUtf8(Utf8ToWide(every)), every);
    EXPECT_EQ(ToValidUtf8("a\xE2\x82z"), "a\uFFFD\uFFFDz");
}

TEST(Path, PartsOfPathsWithoutAFolderOrAName) {
    for (const auto& [path, parent, name, plain] :
         {std::array<const char*, 4>{"/a/b.MP4", "/a", "b.MP4", "/a/b.MP4"},
          {"/a//", "/a/", "", "/a"},
          {"/a", "/", "a", "/a"},
          {"//", "/", "", "/"},
          {"a", ".", "a", "a"},
          {"", ".", "", ""}}) {
        EXPECT_EQ(ParentOf(path), parent) << path;
        EXPECT_EQ(NameOf(path), name) << path;
        EXPECT_EQ(WithoutSlash(path), plain) << path;
    }
    EXPECT_EQ(LowerExtension("/a.b/c.MP4"), ".mp4");
    EXPECT_EQ(LowerExtension("/a.b/c"), "");
}

}  // namespace
}  // namespace KXP
