// Captures that are cut, with a watcher and a worker at work.
#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/editing/Trimmer.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/TempGallery.h"

namespace {

constexpr int32_t kFailure = static_cast<int32_t>(0x80004005);

class TrimmerTest : public testing::Test {
  protected:
    TrimmerTest() {
        gallery_.Add("Game/a.mp4", Video(2000));
        UGCTracker::Parts parts;
        parts.watcher.window = std::chrono::milliseconds(20);
        tracker_ = std::make_unique<UGCTracker>(&host_, false, parts);
        WaitForDuration(2000);
        onCut_ = [this](const std::string& input, const std::string& output) {
            EXPECT_EQ(Bytes(input), Video(2000));
            targets_.push_back(output);
            // In steps, so that a watcher has something to take for a capture.
            gallery_.Add("Game/.part", Video(500));
            std::filesystem::rename(gallery_.Path("Game/.part"), output);
            return 0;
        };
    }

    static std::string Video(uint32_t duration) {
        return TempGallery::Video(1000, duration, captures::Block("Ovirastream SHARE", "{}"));
    }
    static std::string Bytes(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void WaitForDuration(int64_t duration) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (DurationOf("Game/a.mp4") != duration)
            ASSERT_LT(std::chrono::steady_clock::now(), deadline);
    }
    KXP::RetVal Trim(const std::string& output) {
        return Trim(gallery_.Path("Game/a.mp4"), gallery_.Path(output));
    }
    KXP::RetVal Trim(const std::string& input, const std::string& output) {
        const auto cut = [this](const std::string& from, const std::string& to, double, double) {
            return onCut_(from, to);
        };
        return Trimmer(*tracker_, cut, cancelled_).TrimUGC(input, output, 0, 500);
    }
    int64_t DurationOf(const std::string& name) {
        TrackedUGC record;
        return tracker_->GetUGCData(gallery_.Path(name), record).Failed() ? -1 : record.msDuration;
    }

    TempGallery gallery_;
    LogCapture log_;
    RecordingHost host_;
    std::function<int32_t(const std::string& input, const std::string& output)> onCut_;
    const std::atomic<bool> cancelled_{false};
    std::vector<std::string> targets_;
    std::unique_ptr<UGCTracker> tracker_;
};

TEST_F(TrimmerTest, AClipTakesThePlaceOfItsSourceAndNoOther) {
    gallery_.Add("Game/a_tmp.mp4", Video(3000));
    const KXP::RetVal trimmed = Trim("Game/a.mp4");
    EXPECT_EQ(trimmed.code, 0);
    EXPECT_EQ(trimmed.text, "Success");
    EXPECT_EQ(DurationOf("Game/a.mp4"), 500);
    EXPECT_EQ(Bytes(gallery_.Path("Game/a.mp4")), Video(500));
    EXPECT_EQ(Bytes(gallery_.Path("Game/a_tmp.mp4")), Video(3000));
    ASSERT_EQ(targets_.size(), 1u);
    EXPECT_EQ(targets_[0], gallery_.Path("Game/a_tmp2.mp4"));
    EXPECT_FALSE(std::filesystem::exists(targets_[0]));
    EXPECT_FALSE(tracker_->CheckIfIgnored(gallery_.Path("Game/a.mp4")));
    EXPECT_FALSE(tracker_->CheckIfIgnored(targets_[0]));
}

TEST_F(TrimmerTest, AClipOfItsOwnIsOnRecordWhereItCanBe) {
    EXPECT_EQ(Trim("Game/b.mp4").code, 0);
    EXPECT_EQ(targets_[0], gallery_.Path("Game/b.mp4"));
    EXPECT_EQ(DurationOf("Game/b.mp4"), 500);
    EXPECT_EQ(DurationOf("Game/a.mp4"), 2000);
    EXPECT_EQ(Trim("../b.mp4").code, kFailure);
    EXPECT_EQ(Bytes(gallery_.Path("../b.mp4")), Video(500)) << "there, and reported as not on record";
}

TEST_F(TrimmerTest, NothingButACaptureIsReplaced) {
    for (const char* name : {"../notes.txt", "Game/notes.txt", "Game/foreign.mp4"}) {
        gallery_.Add(name, "mine");
        EXPECT_EQ(Trim(name).code, kFailure) << name;
        EXPECT_EQ(Trim(gallery_.Path(name), gallery_.Path(name)).code, kFailure) << name;
        EXPECT_EQ(Bytes(gallery_.Path(name)), "mine");
    }
    const std::string path = gallery_.Path("Game/a.mp4") + std::string("\0.mp4", 5);
    EXPECT_EQ(Trim(path, path).code, kFailure);
    EXPECT_TRUE(targets_.empty());
    // While one is at work on a path no other is.
    const auto cut = onCut_;
    onCut_ = [&](const std::string& input, const std::string& output) {
        EXPECT_EQ(Trim("Game/a.mp4").code, kFailure);
        return cut(input, output);
    };
    EXPECT_EQ(Trim("Game/a.mp4").code, 0);
}

TEST_F(TrimmerTest, AFailureLeavesTheSourceOnRecord) {
    const auto expectUntouched = [&](const KXP::RetVal& result) {
        EXPECT_EQ(result.code, kFailure);
        EXPECT_EQ(result.text, "Gallery Trim failed");
        EXPECT_EQ(Bytes(gallery_.Path("Game/a.mp4")), Video(2000));
        EXPECT_FALSE(tracker_->CheckIfIgnored(gallery_.Path("Game/a.mp4")));
    };
    onCut_ = [](const std::string&, const std::string& output) {
        std::ofstream(output) << "half";
        return kFailure;
    };
    expectUntouched(Trim("Game/a.mp4"));
    EXPECT_EQ(DurationOf("Game/a.mp4"), 2000);
    expectUntouched(Trim("Game/b.mp4"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(gallery_.Path("Game")), {}), 1);
    // The clip is gone when it is to take its place.
    onCut_ = [](const std::string&, const std::string&) { return 0; };
    expectUntouched(Trim("Game/a.mp4"));
    WaitForDuration(2000);
    onCut_ = [](const std::string&, const std::string&) -> int32_t { throw std::runtime_error("text"); };
    EXPECT_THROW(static_cast<void>(Trim("Game/a.mp4")), std::runtime_error);
    EXPECT_FALSE(tracker_->CheckIfIgnored(gallery_.Path("Game/a.mp4")));
}

}  // namespace
