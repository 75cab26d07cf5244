// The limit of the gallery, the space on its disk, and a gallery that is gone.
#include "tests/unit/tracker/UGCTrackerTest.h"

namespace {

using std::chrono::seconds;

TEST_F(UGCTrackerTest, NotifiesEachCrossingOfTheLimitAndOfLowSpace) {
    OpenSettled();
    Settings& settings = *host_.GetGallerySettings();
    settings.SetTotalDiskSpaceMB(100);
    settings.SetMaxSizePercent(2);
    settings.SetCapEnabled(true);
    const std::string big = gallery_.AddImage("Game/big.png");
    std::filesystem::resize_file(big, 2000000);
    EXPECT_EQ(Track(big), "usage 2, added 1 big.png");
    const auto start = clock_.Now();
    RunUntilTold("full");
    EXPECT_EQ(std::chrono::round<seconds>(clock_.Now() - start).count(), 8);
    EXPECT_EQ(tracker_->GetCurrentSizeMB(), 1u);
    gallery_.Remove("Game/big.png");
    tracker_->UntrackFile(big);
    RunDue();
    EXPECT_EQ(host_.Told(), "deleted 1 big.png, usage 0");
    RunUntilTold("not full");
    host_.lowDisk = true;
    RunUntilTold("disk low");
    RunUntilTold("disk low");
    host_.galleryGone = true;
    RunUntilTold("disk fine");
    EXPECT_TRUE(log_.Has("MonitorDiskSpace: 0x80004005"));
}

}  // namespace
