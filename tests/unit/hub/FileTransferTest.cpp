#include "plugin-modules/Gallery/src/endpoints/FileTransfer.h"
#include "tests/support/TempGallery.h"
#include "tests/unit/hub/HubTest.h"

namespace {

class FileTransfers : public HubTest {
  protected:
    // Runs the task as one that was cancelled while it waited for its thread.
    template <typename Task>
    KXP::RetVal RunCancelled() {
        Task task(module_, PageRequest("Method", "id"), SharedHub());
        task.CancelTask();
        KXP::Document params;
        KXP::ParseJSON(R"({"source":")" + source_ + R"(","destination":")" + target_ + "\"}", params);
        return task.ExecuteAsync(params);
    }

    const std::string source_ =
        home_.folder().Write("source.png", captures::Png(captures::PngText("Software", "Ovirastream SHARE")));
    const std::string target_ = home_ / "new/target.png";
};

}  // namespace

TEST_F(FileTransfers, ACancelledCopyIsToldAsOne) {
    home_.folder().MakeFolder("new");
    EXPECT_EQ(RunCancelled<GalleryCopyFile>().code, static_cast<int32_t>(0x80004004));
    EXPECT_TRUE(std::filesystem::is_empty(home_ / "new"));
}

TEST_F(FileTransfers, ACancelledMoveDoesNotWaitForTheTracker) {
    EXPECT_EQ(RunCancelled<GalleryMoveFile>().text, "Success");
    EXPECT_TRUE(std::filesystem::exists(target_));
    EXPECT_FALSE(log_.Has("Move occured"));
    EXPECT_TRUE(log_.HasLine(2, "Check if this folder exists " + (home_ / "new")));
    EXPECT_TRUE(log_.HasLine(2, "It does not, creating!"));
}
