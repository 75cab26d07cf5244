// The requests for single files: those that delete, copy and move captures, and those that need no gallery.

#include "sample-captures/PngImage.h"
#include "tests/abi/GalleryRequests.h"
#include "tests/support/RootMount.h"

namespace {

namespace fs = std::filesystem;

class ItemsTest : public GalleryRequests {
  protected:
    std::string Remove(const std::string& path) { return Result("RemoveGalleryItem", File(path)); }
    std::string Transfer(const char* method, const std::string& from, const std::string& to) {
        return Result(method, R"({"source":")" + from + R"(","destination":")" + to + "\"}");
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
    EXPECT_NE(container_
                  .WaitFor(6,
                           "Gallery API failed Text: KXP: One or more arguments are not valid Message: "
                           "RemoveGalleryItem with 0x80070057[0]: File path")
                  .text,
              "");
    EXPECT_EQ(Remove(alone), "0 Success");
    EXPECT_FALSE(fs::exists(gallery_.Path("Art")));
    fs::remove(foreign);
    EXPECT_EQ(Remove(jpg), "0 Unable to delete matching thumbnail file");
    EXPECT_TRUE(fs::is_empty(gallery_.Path("Race")));
}

TEST_F(ItemsTest, CopiesAndMovesGoWhereNothingIs) {
    const std::string source = gallery_.AddImage("Race/a.png");
    const std::string bytes = gallery_.home().Read("Videos/ZORVEX/Ovirastream/Race/a.png");
    const std::string foreign = gallery_.Add("Race/foreign.png", "text");
    const std::string link = gallery_.home() / "link.png";
    fs::create_symlink(gallery_.home() / "nowhere", link);
    const std::string target = gallery_.home() / "copy.png";
    Start();
    const std::array<std::string, 3> rows[] = {
        {gallery_.Path("Race"), target, "'source' is not a valid file"},
        {foreign, target, "'source' is not a valid ZORVEX file"},
        {source, foreign, "'destination' already exists"},
        {source, "copy.png", "'destination' is not a full path"},
        {source, target + "\\u0000", "'destination' is not a full path"},
    };
    for (const auto& [from, to, text] : rows)
        EXPECT_EQ(Transfer("CopyFile", from, to), std::string(kInvalid).append(" ").append(text));
    EXPECT_EQ(Transfer("MoveFile", foreign, target), kInvalid + " 'source' is not a valid ZORVEX file");
    // Nothing is found there, and yet something is in the way.
    EXPECT_EQ(Transfer("CopyFile", source, link), kFailure + " Failed to copy file");
    EXPECT_EQ(Transfer("MoveFile", source, link), kFailure + " Failed to move file");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(Transfer("CopyFile", source, target), "0 Success");
    EXPECT_EQ(gallery_.home().Read("copy.png"), bytes);

    const std::string moved = gallery_.Path("New/moved.png");
    EXPECT_EQ(Transfer("MoveFile", source, moved), "0 Success");
    EXPECT_FALSE(fs::exists(source));
    EXPECT_NE(Members(Ask("GetFileMetadata", File(moved))), "") << "on record by then";
    EXPECT_NE(container_.WaitFor(6, "Updating tracker on MoveFile took").text, "");
}

TEST_F(ItemsTest, OnlyCapturesOnRecordAreDeletedElsewhereOnlyByTheirBytes) {
    const std::string a = gallery_.AddImage("Race/a.png");
    const std::string b = gallery_.AddImage("Race/b.png");
    const std::string c = gallery_.AddImage("Race/c.png");
    const std::string foreign = gallery_.home().Write("letter.png", "text");
    const std::string link = gallery_.home() / "link.png";
    fs::create_symlink(a, link);
    const std::string own = gallery_.home().Write("own.png", gallery_.home().Read("link.png"));
    const std::string hidden = gallery_.Add(".hidden/letter.png", "text");
    const std::string d = gallery_.AddImage("Race/d.png");
    StartWithRecords({{a, foreign}, {b, link}, {c, own}, {d, hidden}});
    const std::string inGame = gallery_.Path("Race/link.png");
    fs::create_symlink(a, inGame);
    for (const std::string& path : {foreign, link, hidden}) {
        EXPECT_EQ(Remove(path), "-2147024891 Not a capture of this product");
        EXPECT_TRUE(fs::is_symlink(path) || fs::exists(path));
    }
    for (const std::string& path :
         {inGame, gallery_.AddImage("top.png"), gallery_.AddImage("Race/deep/d.png"), a + "/"}) {
        EXPECT_EQ(Remove(path).find(kInvalid), 0u) << path;
        EXPECT_TRUE(path.back() == '/' || fs::exists(path)) << path;
    }
    EXPECT_TRUE(fs::exists(a));
    EXPECT_EQ(Remove(own), "0 Success");
    EXPECT_FALSE(fs::exists(own));
}

TEST_F(RunningPlugin, AnswersAboutFilesFoldersAndDrives) {
    const TempFolder folder;
    const std::string png = folder.Write("a.png", samples::PngImage(70, 50, {{1, 2, 3}, {4, 5, 6}}));
    const std::array<std::string, 3> rows[] = {
        // with the beginning of the answer
        {"GetImageFileDimensions", File(png), R"({"width":70,"height":50,"_return_code":0)"},
        {"GetImageFileDimensions", File(folder.Write("a.txt", "text")),
         R"({"_return_code":-2147024809,"_return_status":"Error in opening or reading image file")"},
        {"IsDirectoryWriteable", R"({"directory":")" + folder.path() + "\"}", R"({"writable":true,)"},
        {"IsDirectoryWriteable", R"({"directory":"/none"})", R"({"writable":false,)"},
        {"IsDirectoryWriteable", R"({"directory":"/tmp\u0000/none"})", R"({"writable":false,)"},
        // A payload that claims to be a failure is not checked against the catalogue.
        {"IsDirectoryWriteable", R"({"_return_code":-1})",
         R"({"_return_code":-2147024809,"_return_status":"Directory value is empty")"},
        {"EnumerateDrives", "{}", R"({"drives":[{"name":"/","type":")"},
        // A single character is taken as a drive letter, so "/" becomes "/:", which does not exist.
        {"GetDriveInfo", R"({"drive":"/"})",
         R"({"_return_code":-2147467259,"_return_status":"Failed to get drive information")"},
        {"GetDriveInfo", R"({"drive":"//\u0000none"})",
         R"({"_return_code":-2147467259,"_return_status":"Failed to get drive information")"},
        {"GetDriveInfo", R"({"drive":"//"})", R"({"freeSpaceMB":)"},
    };
    const bool skipsDrives = !ShowsRootMount();
    for (const auto& [method, payload, answer] : rows) {
        if (skipsDrives && method == "EnumerateDrives") continue;
        EXPECT_EQ(AskText(method, payload).find(answer), 0u) << method << AskText(method, payload);
    }
    if (skipsDrives) GTEST_SKIP() << "drives: no mount of / is to be seen";
}
