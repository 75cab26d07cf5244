#include <array>
#include <stdexcept>

#include <gtest/gtest.h>

#include "base/Path.h"
#include "base/Text.h"

namespace KXP {
namespace {

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
