// The parts of the product that stand on Foundation, with GNUstep in its place;
// scripts/check-apple-foundation builds and runs this.
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "base/Places.h"
#include "common/product/Profile.h"
#include "common/system/System.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;
using Names = std::multiset<std::string>;

Names List(const std::string& folder, bool folders) {
    const std::vector<std::string> names = KXP::Platform::ListFolder(folder, folders);
    return {names.begin(), names.end()};
}

TEST(Foundation, ListsWhatCanBeReached) {
    const TempFolder temp;
    const std::string folder = temp / "Größe 映像";
    for (const char* name : {"a.png", "Ähre 🎮.mp4", ".hidden"})
        temp.Write("Größe 映像/" + std::string(name), "x");
    fs::create_directories(folder + "/Spiel ß/inner");
    fs::create_directory_symlink(folder + "/Spiel ß", folder + "/linked");
    fs::create_symlink(folder + "/gone", folder + "/dangling");
    ASSERT_EQ(mkfifo((folder + "/pipe").c_str(), 0600), 0);
    EXPECT_EQ(List(folder, true), (Names{"Spiel ß", "linked"}));
    EXPECT_EQ(List(folder, false), (Names{".hidden", "a.png", "pipe", "Ähre 🎮.mp4"}));
    temp.Write("Größe 映像/\xff.png", "x");
    EXPECT_EQ(List(folder, true), (Names{"Spiel ß", "linked"}));
    EXPECT_EQ(List(folder + "/\xff", false), Names());
    EXPECT_EQ(List(folder + "/none", false), Names());
}

TEST(Foundation, PlacesAreTheUsersOwn) {
    const std::string home = KXP::Platform::HomeFolder() + "/";
    std::set<std::string> places;
    for (const std::string& place : {KXP::Platform::AppSupportFolder(), KXP::Platform::CacheFolder(),
                                     KXP::Platform::LibraryFolder(), KXP::Platform::MoviesFolder()}) {
        EXPECT_EQ(place.rfind(home, 0), 0U) << place;
        places.insert(place);
    }
    EXPECT_EQ(places.size(), 4U);
}

// The script sets it. GNUstep leaves out the country.
TEST(Foundation, KnowsTheLanguageAndNoVersionOfAnotherSystem) {
    EXPECT_EQ(KXP::GetOsLocale(), "de");
    EXPECT_EQ(KXP::GetOsVersion(), "");
}

}  // namespace
