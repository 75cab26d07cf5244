#include <gtest/gtest.h>

#include "common/Profile.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempFolder.h"
#include "tests/unit/common/Thrown.h"

namespace KXP {
namespace {

class ProfileTest : public testing::Test {
  protected:
    std::string Movies(const std::string& userDirs) {
        home_.Write(".config/user-dirs.dirs", userDirs);
        return GetSpecialDirectory(SD_MOVIES);
    }

    const TempFolder home_;
    const ScopedEnv homeVariable_{"HOME", home_.path()};
    const ScopedEnv dataHome_{"XDG_DATA_HOME", ""};
    const ScopedEnv configHome_{"XDG_CONFIG_HOME", ""};
};

TEST_F(ProfileTest, FoldersOfTheUser) {
    EXPECT_EQ(GetSpecialDirectory(SD_MOVIES), home_ / "Videos");
    EXPECT_EQ(GetSpecialDirectory(SD_TEMP), home_ / ".local/share/ZORVEX/OvirastreamX/temp");
    EXPECT_TRUE(home_.Has(".local/share/ZORVEX/OvirastreamX/temp"));
    const ScopedEnv set("XDG_DATA_HOME", "/data"), relative("XDG_CONFIG_HOME", "not/absolute");
    EXPECT_EQ(GetSpecialDirectory(SD_APP_SUPPORT), "/data");
    EXPECT_EQ(GetSpecialDirectory(SD_LIBRARY), home_ / ".config");
    EXPECT_EQ(Thrown([] { GetSpecialDirectory(static_cast<SpecialDirectory>(7)); }),
              "0x80070057[0]: SD_PROGRAM_FILES is not supported on Mac OS");
}

TEST_F(ProfileTest, MoviesByTheUsersOwnFile) {
    EXPECT_EQ(Movies("# c\nXDG_MUSIC_DIR=\"$HOME/M\"\nXDG_VIDEOS_DIR=\"$HOME/My \\\"Films\\\"/\"\n"),
              home_ / "My \"Films\"");
    EXPECT_EQ(Movies("XDG_VIDEOS_DIR=\"/mnt/films\""), "/mnt/films");
    EXPECT_EQ(Movies("XDG_VIDEOS_DIR=\"/one\"\n  XDG_VIDEOS_DIR=\"/two\"\n"), "/two");
    for (const char* bad : {"XDG_VIDEOS_DIR=\"relative\"", "XDG_VIDEOS_DIR=/bare", "XDG_VIDEOS_DIR=\"/open",
                            "XDG_VIDEOS_DIR=\"$HOMER/x\"", "XDG_VIDEOS_DIR=\"", "XDG_VIDEOS_DIR=\"$HOME",
                            "XDG_VIDEOS_DIR=\"/a\\"})
        EXPECT_EQ(Movies(bad), home_ / "Videos") << bad;
}

TEST_F(ProfileTest, DataDirectoriesByProfile) {
    EXPECT_EQ(GetProductDataDirectory(LocalApp), home_ / ".local/share/ZORVEX/OvirastreamX");
    EXPECT_EQ(GetProductDataDirectory(ProfileLibrary), home_ / ".config/ZORVEX/OvirastreamX");
    EXPECT_EQ(GetAppDataDirectory(LocalApp), home_ / ".local/share/ZORVEX/common_test");
    EXPECT_EQ(GetAppDataDirectory(ProfileLibrary), home_ / ".config/ZORVEX/OvirastreamX");
    for (const auto get : {GetProductDataDirectory, GetAppDataDirectory}) {
        EXPECT_EQ(Thrown([&] { get(static_cast<Profile>(3)); }), "0x80070057[0]: Invalid profile type 3");
    }
}

}  // namespace
}  // namespace KXP
