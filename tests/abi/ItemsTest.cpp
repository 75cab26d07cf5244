// The requests that delete, copy and move captures.

#include "tests/abi/GalleryRequests.h"

namespace {

namespace fs = std::filesystem;

class ItemsTest : public GalleryRequests {
  protected:
    std::string Remove(const std::string& path) { return Result("RemoveGalleryItem", File(path)); }
    std::string Copy(const std::string& from, const std::string& to) {
        return Result("CopyFile", Transfer(from, to));
    }
    std::string Move(const std::string& from, const std::string& to) {
        return Result("MoveFile", Transfer(from, to));
    }
    static std::string File(const std::string& path) { return R"({"file":")" + path + "\"}"; }
    static std::string Transfer(const std::string& from, const std::string& to) {
        return R"({"source":")" + from + R"(","destination":")" + to + "\"}";
    }
};

}  // namespace

TEST_F(ItemsTest, ARemovedCaptureGoesWithItsThumbnailOrItsEmptyFolder) {
    const std::string alone = gallery_.AddImage("Art/a.png");
    const std::string jpg = gallery_.Add("Race/b.JPG", captures::OwnJpeg());
    const std::string thumbnail = gallery_.Add("Race/b Thumbnail.jpg", "x");
    const std::string foreign = gallery_.Add("Race/foreign.png", "text");
    Start();
    EXPECT_EQ(Remove(foreign), kInvalid + " File path is not ZORVEX tracked UGC file");
    EXPECT_TRUE(fs::exists(foreign));
    EXPECT_EQ(Remove(alone), "0 Success");
    EXPECT_FALSE(fs::exists(gallery_.Path("Art")));
    fs::remove(foreign);
    EXPECT_EQ(Remove(jpg), "0 Unable to delete matching thumbnail file");
    EXPECT_TRUE(fs::is_empty(gallery_.Path("Race")));
}

TEST_F(ItemsTest, CopiesAndMovesGoWhereNothingIs) {
    const std::string source = gallery_.AddImage("Race/a.png");
    const std::string foreign = gallery_.Add("Race/foreign.png", "text");
    const std::string link = gallery_.home() / "link.png";
    fs::create_symlink(gallery_.home() / "nowhere", link);
    const std::string target = gallery_.home() / "copy.png";
    Start();
    const struct {
        std::string from;
        std::string to;
        std::string result;
    } rows[] = {
        {gallery_.Path("Race/none.png"), target, kInvalid + " 'source' is not a valid file"},
        {gallery_.Path("Race"), target, kInvalid + " 'source' is not a valid file"},
        {foreign, target, kInvalid + " 'source' is not a valid ZORVEX file"},
        {source, foreign, kInvalid + " 'destination' already exists"},
        {source, "copy.png", kInvalid + " 'destination' is not a full path"},
        {source, target + "\\u0000", kInvalid + " 'destination' is not a full path"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Copy(row.from, row.to), row.result);
        EXPECT_EQ(Move(row.from, row.to), row.result);
    }
    // Nothing is found there, and yet something is in the way.
    EXPECT_EQ(Copy(source, link), kFailure + " Failed to copy file");
    EXPECT_EQ(Move(source, link), kFailure + " Failed to move file");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(Copy(source, gallery_.home() / "no/copy.png"), kFailure + " Failed to copy file");
    EXPECT_EQ(Copy(source, target), "0 Success");
    EXPECT_EQ(gallery_.home().Read("copy.png"), gallery_.home().Read("Videos/ZORVEX/Ovirastream/Race/a.png"));

    const std::string moved = gallery_.Path("New/moved.png");
    EXPECT_EQ(Move(source, moved), "0 Success");
    EXPECT_FALSE(fs::exists(source));
    EXPECT_NE(Members(Ask("GetFileMetadata", File(moved))), "") << "on record by then";
    EXPECT_NE(container_.WaitFor(6, "Updating tracker on MoveFile took").text, "");
}

TEST(Items, ARecordThatNamesAForeignFileDoesNotDeleteIt) {
    const PluginLibrary plugin(PRODUCT_ROOT);
    const TempGallery gallery{};
    const std::string capture = gallery.AddImage("Race/a.png");
    const std::string foreign = gallery.home().Write("letter.png", "text");
    const std::string link = gallery.home() / "link.png";
    fs::create_symlink(capture, link);
    TrackGallery(plugin);
    const std::string tracker = gallery.ShareFile("UGCTracker.json");
    const std::string records = gallery.home().Read(tracker);
    const size_t at = records.find(capture);
    ASSERT_NE(at, std::string::npos) << records;
    for (const std::string& path : {foreign, link}) {
        gallery.home().Write(tracker, std::string(records).replace(at, capture.size(), path));
        FakeContainer container;
        ASSERT_TRUE(plugin.Up(container));
        const std::string answer =
            plugin.Ask(container, "RemoveGalleryItem", "ask", R"({"file":")" + path + "\"}");
        EXPECT_TRUE(plugin.Down(container));
        EXPECT_NE(answer.find(R"("_return_code":-2147024891,"_return_status":"Unable to delete file")"),
                  std::string::npos)
            << answer;
        EXPECT_TRUE(gallery.home().Has(fs::path(path).filename()));
    }
}
