#include <chrono>
#include <csignal>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "plugin-modules/Gallery/src/thumbnails/ThumbnailFiles.h"
#include "sample-captures/PngImage.h"
#include "tests/support/TemporaryHome.h"

namespace {

namespace fs = std::filesystem;
using Key = ThumbnailCache::Key;

constexpr const char* kFolder = "cache/ZORVEX/OvirastreamX/Thumbnails";

class ThumbnailFilesTest : public testing::Test {
  protected:
    // Of a file that exists.
    Key KeyOf(const std::string& name) const { return {home_.folder().Write(name, "x"), 10, -7, 64, 32}; }
    fs::path Stored() const { return *fs::directory_iterator(home_ / kFolder); }
    static fs::perms ModeOf(const fs::path& path) { return fs::status(path).permissions(); }
    size_t Count() const {
        return static_cast<size_t>(std::distance(fs::directory_iterator(home_ / kFolder), {}));
    }

    const TemporaryHome home_{};
    const std::string png_ = samples::PngImage(64, 32, {{255, 0, 0}, {0, 0, 255}});
    ThumbnailFiles files_;
};

TEST_F(ThumbnailFilesTest, GiveBackThePictureOfTheSameFileInTheSameBoxAlone) {
    const Key key = KeyOf("a b\xC3\xA4.png");
    EXPECT_EQ(ThumbnailFiles::Find(key), "");
    EXPECT_FALSE(home_.folder().Has("cache"));
    files_.Put(key, png_);
    EXPECT_EQ(ThumbnailFiles::Find(key), std::string_view(png_));
    for (const Key& other : {Key{key.path, 11, -7, 64, 32}, Key{key.path, 10, -8, 64, 32},
                             Key{key.path, 10, -7, 32, 64}, Key{key.path + "x", 10, -7, 64, 32}})
        EXPECT_EQ(ThumbnailFiles::Find(other), "");
    EXPECT_EQ(ModeOf(Stored()), fs::perms::owner_read | fs::perms::owner_write);
    for (fs::path folder = home_ / kFolder; folder != home_.folder().path(); folder = folder.parent_path())
        EXPECT_EQ(ModeOf(folder), fs::perms::owner_all) << folder;
    // The changed file's picture takes the place of the old one.
    files_.Put({key.path, 11, 0, 64, 32}, png_);
    EXPECT_EQ(Count(), 1U);
    files_.Put({"relative.png", 10, -7, 64, 32}, png_);
    EXPECT_EQ(Count(), 1U);
}

TEST_F(ThumbnailFilesTest, PassOverAndReplaceWhatIsDamagedForeignOrALink) {
    const Key key = KeyOf("a.png");
    files_.Put(key, png_);
    const fs::path place = Stored();
    const std::string name = std::string(kFolder) + "/" + place.filename().string();
    const std::string right = home_.folder().Read(name);
    const auto changed = [&](size_t at, const std::string& bytes) {
        return std::string(right).replace(at, bytes.size(), bytes);
    };
    const size_t data = right.find("IDAT");
    for (const std::string& wrong :
         {std::string(), right.substr(0, 40), right.substr(0, right.size() - 1), right + "x", png_,
          changed(0, "x"), changed(33, "\xFF\xFF\xFF\xFF"), changed(data - 4, "\x7F\xFF\xFF\xFF"),
          changed(data - 4, "\xFF\xFF\xFF\xF0"), changed(data + 6, "??"), changed(right.find("-7"), "-8"),
          changed(right.find("64x32"), "64x33")}) {
        home_.folder().Write(name, wrong);
        EXPECT_EQ(ThumbnailFiles::Find(key), "") << wrong.size();
        files_.Put(key, png_);
        EXPECT_EQ(ThumbnailFiles::Find(key), std::string_view(png_));
    }
    const std::string elsewhere = home_.folder().Write("elsewhere.png", right);
    fs::remove(place);
    fs::create_symlink(elsewhere, place);
    EXPECT_EQ(ThumbnailFiles::Find(key), "");
    files_.Put(key, png_);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(place)));
    EXPECT_EQ(home_.folder().Read("elsewhere.png"), right);
    // A folder that others could read or write is closed to them.
    fs::permissions(home_ / kFolder, fs::perms::all);
    EXPECT_EQ(ThumbnailFiles::Find(key), std::string_view(png_));
    EXPECT_EQ(ModeOf(home_ / kFolder), fs::perms::owner_all);
}

TEST_F(ThumbnailFilesTest, WriteNothingThroughALinkOrWhereThereIsNoRoom) {
    const Key key = KeyOf("a.png");
    const std::string target = home_.folder().MakeFolder("target");
    home_.folder().MakeFolder("cache/ZORVEX/OvirastreamX");
    fs::create_directory_symlink(target, home_ / kFolder);
    files_.Put(key, png_);
    EXPECT_EQ(ThumbnailFiles::Find(key), "");
    EXPECT_TRUE(fs::is_empty(target));
    fs::remove_all(home_ / "cache");
    home_.folder().Write("cache", "a file");
    files_.Put(key, png_);
    EXPECT_EQ(ThumbnailFiles::Find(key), "");
    fs::remove(home_ / "cache");

    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit small{100, old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    files_.Put(key, png_);
    setrlimit(RLIMIT_FSIZE, &old);
    (void)std::signal(SIGXFSZ, handler);
    EXPECT_EQ(ThumbnailFiles::Find(key), "");
    EXPECT_TRUE(fs::is_empty(home_ / kFolder));
}

TEST_F(ThumbnailFilesTest, KeepThoseAskedForLastAndNoneOfAFileThatIsGone) {
    std::vector<Key> keys;
    for (int i = 0; i < 12; ++i) {
        keys.push_back(KeyOf(std::to_string(i) + ".png"));
        files_.Put(keys.back(), std::string_view(png_));
        for (const fs::path& file : fs::directory_iterator(home_ / kFolder))
            fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(1));
    }
    EXPECT_EQ(ThumbnailFiles::Find(keys[1]), std::string_view(png_));
    fs::remove(keys[10].path);
    const std::string foreign = home_.folder().Write(std::string(kFolder) + "/README", "not ours");
    // Room for seven files of a block each.
    ThumbnailFiles(uint64_t{8} * 4096).Put(KeyOf("new.png"), std::string_view(png_));
    EXPECT_TRUE(fs::exists(foreign));
    EXPECT_EQ(Count(), 1U + 6U);
    for (size_t i = 0; i < keys.size(); ++i)
        EXPECT_EQ(!ThumbnailFiles::Find(keys[i]).empty(), i == 1 || (i >= 7 && i != 10)) << i;
}

}  // namespace
