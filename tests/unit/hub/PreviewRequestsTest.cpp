#include "plugin-modules/Gallery/src/endpoints/PreviewRequests.h"
#include "tests/support/CaptureBytes.h"
#include "tests/unit/hub/HubTest.h"

namespace {

namespace fs = std::filesystem;

class PreviewRequestsTest : public HubTest {
  protected:
    PreviewRequestsTest() { EXPECT_TRUE(settings().SetTempFolder(home_.folder().MakeFolder("temp"))); }

    void Name(PreviewRequests& requests, const std::string& paths) {
        Ask("PreviewPathInfo", requests, &PreviewRequests::PopulatePreviewPath,
            "{\"paths\":[" + paths + "]}");
        EXPECT_EQ(result_.text, "Success");
    }
    std::string Delete(const std::string& path) {
        Ask("DeletePreview", requests_, &PreviewRequests::DeletePreview,
            R"({"previewFilepath":")" + path + "\"}");
        return KXP::ToStr(result_);
    }
    uint32_t WriteBitmap(const std::string& text) {
        Ask("WriteEncryptedBitmap", requests_, &PreviewRequests::WriteEncryptedBitmap,
            R"({"bitmapImage":")" + text + "\"}");
        return static_cast<uint32_t>(result_.code);
    }

    PreviewRequests requests_{hub_};
    const std::string kept_ = home_.folder().Write("kept.png", "the user's own");
};

constexpr const char* kSuccess = "0x00000000[0]: Success";
constexpr const char* kUnknown = "0x80070057[0]: Preview path is not known";

// The header of a picture of 16 by 9.
const std::string kBmp = "BM" + std::string(12, '\0') +
                         std::string("\x28\0\0\0\x10\0\0\0\x09\0\0\0\1\0\x18\0", 16) + std::string(40, 'p');

}  // namespace

TEST_F(PreviewRequestsTest, OnlyWhatWasNamedOrIsTemporaryIsDeleted) {
    const std::string named = home_.folder().Write("previews/named.png", "x");
    fs::create_symlink(kept_, home_ / "temp/link.png");
    home_.folder().MakeFolder("temp/folder");
    Name(requests_, '"' + named + "\",5");
    for (const std::string& path : {kept_, home_ / "temp/../kept.png", home_ / "temp/link.png",
                                    home_ / "temp/folder", home_ / "temp/none.png", named + "\\u0000"})
        EXPECT_EQ(Delete(path), kUnknown) << path;
    EXPECT_TRUE(fs::exists(kept_) && fs::is_symlink(home_ / "temp/link.png") && fs::exists(named));

    EXPECT_EQ(Delete(home_.folder().Write("temp/shot.png", "x")), kSuccess);
    EXPECT_EQ(Delete(named), kSuccess);
    EXPECT_FALSE(fs::exists(home_ / "temp/shot.png") || fs::exists(named));
    home_.folder().Write("previews/named.png", "another's");
    EXPECT_EQ(Delete(named), kUnknown) << "forgotten when it was deleted";
}

TEST_F(PreviewRequestsTest, NamedOnesEndWithTheObject) {
    const std::string named = home_.folder().Write("previews/named.png", "x");
    fs::create_symlink(kept_, home_ / "previews/link.png");
    {
        PreviewRequests ending(hub_);
        Name(ending, '"' + named + "\",\"" + (home_ / "previews/link.png") + '"');
        EXPECT_TRUE(fs::exists(named));
    }
    EXPECT_FALSE(fs::exists(named));
    EXPECT_TRUE(fs::exists(kept_));
}

TEST_F(PreviewRequestsTest, ABitmapTakesThePlaceOfALinkAndNotOfItsTarget) {
    fs::create_symlink(kept_, home_ / "temp/ZvBitmap.bmp");
    EXPECT_EQ(WriteBitmap(captures::Base64(kBmp)), 0u);
    EXPECT_FALSE(fs::is_symlink(home_ / "temp/ZvBitmap.bmp"));
    EXPECT_EQ(home_.folder().Read("temp/ZvBitmap.bmp"), kBmp);
    EXPECT_EQ(home_.folder().Read("kept.png"), "the user's own");

    // Nothing but a bitmap, and then the last one stays.
    for (const std::string& text :
         {std::string(), captures::Base64(kBmp) + "\\n", captures::Base64("GIF89a\x10\1\x09\1\1\1\1"),
          captures::Base64(kBmp.substr(0, 20))})
        EXPECT_EQ(WriteBitmap(text), 0x8007000Du) << text;
    EXPECT_EQ(home_.folder().Read("temp/ZvBitmap.bmp"), kBmp);
    EXPECT_EQ(std::distance(fs::directory_iterator(home_ / "temp"), fs::directory_iterator()), 1);

    fs::remove(home_ / "temp/ZvBitmap.bmp");
    home_.folder().MakeFolder("temp/ZvBitmap.bmp");
    EXPECT_EQ(WriteBitmap(captures::Base64(kBmp)), 0x80004005u);
}
