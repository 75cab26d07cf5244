#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "plugin-modules/Gallery/src/thumbnails/DesktopThumbnails.h"
#include "sample-captures/MediaBytes.h"
#include "sample-captures/PngImage.h"
#include "tests/support/TemporaryHome.h"

namespace {

namespace fs = std::filesystem;

TEST(DesktopFileUri, IsWrittenAsFileManagersDo) {
    EXPECT_EQ(desktop::FileUri("/a/-_.!~*'()&=:@+$,Z9"), "file:///a/-_.!~*'()&=:@+$,Z9");
    EXPECT_EQ(desktop::FileUri("/\xC3\xA4 b/#%;<>?[\\]^`{|}\""),
              "file:///%C3%A4%20b/%23%25%3B%3C%3E%3F%5B%5C%5D%5E%60%7B%7C%7D%22");
    for (const char* path : {"", "a.png", "/a//b", "/a/../b", "/./b"})
        EXPECT_EQ(desktop::FileUri(path), "") << path;
}

class DesktopThumbnails : public testing::Test {
  protected:
    // Changed at 1.5 s.
    ThumbnailCache::Key KeyOf(const std::string& name, uint32_t box = 60) const {
        return {home_.folder().Write(name, "x"), 10, 1500000000, box, box};
    }
    void Leave(const ThumbnailCache::Key& key, uint32_t width) const {
        const std::string png = samples::PngImage(width, width / 2, {{255, 0, 0}, {0, 0, 255}});
        desktop::LeaveThumbnail(media_, {key, {KXP::SlabString(png.begin(), png.end()), width, width / 2}});
    }
    DrawnPicture Find(const ThumbnailCache::Key& key) const {
        return desktop::FindThumbnail(media_, key, going_);
    }
    // The one thumbnail of a size, from the home.
    std::string Only(const std::string& size) const {
        const std::string folder = "cache/thumbnails/" + size + "/";
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(home_ / folder))
            names.push_back(entry.path().filename());
        EXPECT_EQ(names.size(), 1U);
        return folder + names.front();
    }
    fs::perms ModeOf(const std::string& name) const { return fs::status(home_ / name).permissions(); }

    const TemporaryHome home_{};
    const std::atomic<bool> going_{false};
    const ovnxmedia::MediaLibrary media_{PRODUCT_DEPENDENCIES};
};

TEST_F(DesktopThumbnails, AreLeftInTheSizeThatThePictureFillsAndServeSmallerBoxes) {
    const ThumbnailCache::Key key = KeyOf("a b.png");
    Leave(key, 127);
    EXPECT_EQ(Find(key).png, "");
    EXPECT_FALSE(home_.folder().Has("cache"));
    Leave(key, 320);
    const std::string place = Only("large");
    EXPECT_EQ(ModeOf(place), fs::perms::owner_read | fs::perms::owner_write);
    for (const char* folder : {"cache/thumbnails", "cache/thumbnails/large"})
        EXPECT_EQ(ModeOf(folder), fs::perms::owner_all);
    const std::string bytes = home_.folder().Read(place);
    for (const std::string& text :
         {samples::PngTextChunk("Thumb::URI", "file://" + home_.folder().path() + "/a%20b.png"),
          samples::PngTextChunk("Thumb::MTime", "1"), samples::PngTextChunk("Thumb::Size", "10")})
        EXPECT_NE(bytes.find(text), std::string::npos);
    EXPECT_EQ(bytes.substr(16, 8), samples::U32(256) + samples::U32(128));

    const DrawnPicture found = Find(key);
    EXPECT_EQ(std::pair(found.width, found.height), std::pair(60U, 30U));
    EXPECT_EQ(found.png.find("Thumb::"), std::string::npos);
    for (const ThumbnailCache::Key& other : {ThumbnailCache::Key{key.path, 11, key.time, 60, 60},
                                             {key.path, 10, key.time + 500000000, 60, 60},
                                             {key.path, 10, key.time, 256, 256},
                                             {key.path + "x", 10, key.time, 60, 60}})
        EXPECT_EQ(Find(other).png, "");
    // One of the same file stays, one of what it was is replaced.
    Leave(key, 256);
    EXPECT_EQ(home_.folder().Read(place), bytes);
    Leave({key.path, 11, key.time, 60, 60}, 300);
    EXPECT_NE(home_.folder().Read(Only("large")), bytes);
}

TEST_F(DesktopThumbnails, AreNotBelievedWhereTheyMayBeOthers) {
    const ThumbnailCache::Key key = KeyOf("a.png");
    Leave(key, 130);
    const fs::path place = home_ / Only("normal");
    const fs::path away = home_ / "away.png";
    ASSERT_NE(Find(key).png, "");
    // Older than the file, in the same second.
    timespec times[2]{{1, 400000000}, {1, 400000000}};
    ASSERT_EQ(utimensat(AT_FDCWD, place.c_str(), times, 0), 0);
    EXPECT_EQ(Find(key).png, "");
    times[1].tv_nsec = 600000000;
    ASSERT_EQ(utimensat(AT_FDCWD, place.c_str(), times, 0), 0);
    EXPECT_NE(Find(key).png, "");
    fs::rename(place, away);
    fs::create_symlink(away, place);
    EXPECT_EQ(Find(key).png, "");
    fs::remove(place);
    ASSERT_EQ(mkfifo(place.c_str(), 0600), 0);
    EXPECT_EQ(Find(key).png, "");
    Leave(key, 130);
    EXPECT_NE(Find(key).png, "");
    for (const char* folder : {"cache/thumbnails/normal", "cache/thumbnails"}) {
        fs::rename(home_ / folder, home_ / "elsewhere");
        fs::create_directory_symlink(home_ / "elsewhere", home_ / folder);
        EXPECT_EQ(Find(key).png, "") << folder;
        Leave(KeyOf("b.png"), 130);
        fs::remove(home_ / folder);
        fs::rename(home_ / "elsewhere", home_ / folder);
        EXPECT_EQ(home_ / Only("normal"), place);
    }
    fs::permissions(place.parent_path(), fs::perms::all);
    Leave(KeyOf("b.png"), 130);
    EXPECT_EQ(home_ / Only("normal"), place);
}

}  // namespace
