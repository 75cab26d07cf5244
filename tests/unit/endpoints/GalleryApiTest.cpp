#include <gtest/gtest.h>
#include <sys/stat.h>

#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"
#include "sample-captures/SampleGallery.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

TEST(GalleryApi, OwnCapturesAloneFillAFolder) {
    const LogCapture log;
    const TempFolder folder;
    samples::WriteSampleGallery(folder / "gallery");
    const std::string race = folder / "gallery/Rustwind Rally";
    EXPECT_FALSE(ZvGalleryAPI::IsDirectoryEmpty(race, true));
    bool isOwn = false;
    EXPECT_EQ(ZvGalleryAPI::CheckIfZv(race + "/Start line.png", isOwn), 1);
    EXPECT_TRUE(isOwn);

    folder.Write("foreign/notes.txt", "");
    folder.Write("foreign/.own.png", folder.Read("gallery/Rustwind Rally/Start line.png"));
    folder.MakeFolder("foreign/folder");
    EXPECT_FALSE(ZvGalleryAPI::IsDirectoryEmpty(folder / "foreign", false));
    EXPECT_TRUE(ZvGalleryAPI::IsDirectoryEmpty(folder / "foreign", true));
    ASSERT_EQ(mkfifo((folder / "foreign/pipe.png").c_str(), 0600), 0);
    EXPECT_FALSE(ZvGalleryAPI::IsDirectoryEmpty(folder / "foreign", true))
        << "what cannot be told may be own";
    EXPECT_TRUE(ZvGalleryAPI::IsDirectoryEmpty(folder / "nowhere", false));
}
