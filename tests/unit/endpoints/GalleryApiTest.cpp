#include <gtest/gtest.h>
#include <sys/stat.h>

#include "common/Json.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"
#include "plugin-modules/Gallery/src/endpoints/FolderListing.h"
#include "sample-captures/SampleGallery.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

TEST(GalleryApi, AFileThatCannotBeToldLeavesTheWordsAlone) {
    const LogCapture log;
    const TempFolder folder;
    folder.MakeFolder("folder.png");
    bool isOwn = true;
    std::string type = "as it was";
    std::string subtype = type;
    std::string source = type;
    const auto code = ZvGalleryAPI::CheckIfZv(folder / "folder.png", isOwn, type, subtype, source);
    EXPECT_EQ(static_cast<uint32_t>(code), 0x80004005u);
    EXPECT_FALSE(isOwn);
    EXPECT_EQ(type + subtype + source, "as it wasas it wasas it was");
    EXPECT_EQ(static_cast<uint32_t>(ZvGalleryAPI::CheckIfJPGFileSizeIsValid(folder / "none.jpg", isOwn)),
              0x80070006u);
}

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

TEST(FolderListing, OfOwnFilesLeavesOutTheOthersAndTheirFolders) {
    const LogCapture log;
    const TempFolder folder;
    samples::WriteSampleGallery(folder / "gallery");
    folder.Write("gallery/foreign/notes.txt", "");
    FolderListing::Options options;
    options.directory = folder / "gallery/";
    options.onlyOwn = true;
    FolderListing listing(options);
    listing.Read(false);
    KXP::Document response(rapidjson::kObjectType);
    listing.Write(response, response.GetAllocator());
    EXPECT_EQ(response["files"].Size(), 3u);
    EXPECT_EQ(response["directories"].Size(), 3u) << "neither the empty folder nor the foreign one";
}
