// A gallery of made captures with a tracker over it, and how to measure the two.
#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <future>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "CobalixUtil.h"
#include "benchmarks/Times.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/TempGallery.h"

namespace benchmarks {

inline constexpr int kFilesPerGame = 200;
inline constexpr std::chrono::minutes kPatience{10};

// A gallery with screenshots and highlights in turn.
class SampleGallery : public TempGallery {
  public:
    SampleGallery() {
        KXP::LogInit(
            KXP::LocalApp, [](const char*, void*) {}, nullptr);
    }
    ~SampleGallery() { KXP::LogInit(KXP::LocalApp, nullptr, nullptr); }

    std::string AddCapture(const std::string& game) {
        const std::string name = game + "/" + game + " capture " + std::to_string(++captures_);
        return captures_ % 2 == 0 ? Add(name + ".png", image_) : Add(name + ".mp4", video_);
    }
    std::vector<std::string> Fill(int count, int perGame = kFilesPerGame) {
        // As captures have been there for a while, not as if all had come a moment before the start.
        const auto yesterday = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24);
        std::vector<std::string> paths;
        std::set<std::filesystem::path> folders{path()};
        for (int i = 0; i < count; ++i) {
            paths.push_back(AddCapture("Game " + std::to_string(i / perGame)));
            std::filesystem::last_write_time(paths.back(), yesterday + std::chrono::milliseconds(i));
            folders.insert(std::filesystem::path(paths.back()).parent_path());
        }
        for (const std::filesystem::path& folder : folders)
            std::filesystem::last_write_time(folder, yesterday);
        return paths;
    }
    void RemoveTrackerFile() const { std::filesystem::remove(home() / ShareFile("UGCTracker.json")); }

  private:
    const std::string image_ = captures::Png(captures::PngText("Software", "Ovirastream SHARE"));
    const std::string video_ = Video(
        600, 1200,
        captures::Block("Ovirastream SDK", R"({"HighlightName":"Victory","HighlightGroupId":"group"})"));
    int captures_ = 0;
};

// Counts what is added, and keeps nothing.
class CountingHost : public RecordingHost {
  public:
    void UpdateGalleryUsage(unsigned) override {}
    void NotifyUGCDeleted(const TrackedUGC&) override {}
    void NotifyUGCAdded(TrackedUGC, Announcements::Found, bool) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++added_;
        changed_.notify_all();
    }
    bool WaitForAdded(int count) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, kPatience, [&] { return added_ >= count; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int added_ = 0;
};

inline std::unique_ptr<UGCTracker> MakeTracker(ITrackerHost& host, bool watch = false) {
    UGCTracker::Parts parts;
    parts.watch = watch;
    return std::make_unique<UGCTracker>(&host, false, parts);
}

// Until the worker has done what is in its queue by now.
inline void WaitForWorker(UGCTracker& tracker) {
    auto done = std::make_shared<std::promise<void>>();
    tracker.queue().EnqueueNotification(tracker.queue().Now(), [done] { done->set_value(); });
    done->get_future().wait_for(kPatience);
}

inline size_t RecordsOf(UGCTracker& tracker) {
    return tracker.GetRecentUGC(UINT32_MAX).size();
}

}  // namespace benchmarks
