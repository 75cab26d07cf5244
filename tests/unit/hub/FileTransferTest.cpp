#include "plugin-modules/Gallery/src/endpoints/FileTransfer.h"
#include "tests/support/TempGallery.h"
#include "tests/unit/hub/HubTest.h"

TEST_F(HubTest, ACancelledCopyLeavesNothingAndACancelledMoveDoesNotWaitForTheTracker) {
    const std::string source =
        home_.folder().Write("source.png", captures::Png(captures::PngText("Software", "Ovirastream SHARE")));
    KXP::Document params;
    KXP::ParseJSON(R"({"source":")" + source + R"(","destination":")" + (home_ / "new/target.png") + "\"}",
                   params);
    // As tasks that were cancelled while they waited for their threads.
    GalleryCopyFile copy(module_, PageRequest("CopyFile", "id"), SharedHub());
    GalleryMoveFile move(module_, PageRequest("MoveFile", "id"), SharedHub());
    copy.CancelTask();
    move.CancelTask();
    const std::string folder = home_.folder().MakeFolder("new");
    EXPECT_EQ(copy.ExecuteAsync(params).code, static_cast<int32_t>(0x80004004));
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    std::filesystem::remove(folder);
    EXPECT_EQ(move.ExecuteAsync(params).text, "Success");
    EXPECT_TRUE(home_.folder().Has("new/target.png"));
    EXPECT_FALSE(log_.Has("Move occured"));
}
