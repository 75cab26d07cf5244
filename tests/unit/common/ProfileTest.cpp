#include <gtest/gtest.h>

#include "common/Profile.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempFolder.h"

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
    const ScopedEnv configHome_{"XDG_CONFIG_HOME", ""};
};

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

}  // namespace
}  // namespace KXP
