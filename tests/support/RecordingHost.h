// A plug-in around a tracker that keeps what the tracker tells, one line each in order.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "common/Exception.h"
#include "common/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/ITrackerHost.h"

class RecordingHost : public ITrackerHost {
  public:
    Settings* GetGallerySettings() override { return &settings_; }
    std::string GetGalleryPath() override {
        if (galleryGone) throw KXP::Exception(KXP::Code::kFailure, "ERROR: Unable to create folder", 0);
        return settings_.GetGalleryPath() + "/";
    }
    bool GetHighlightInfo(const std::string& path, Highlight& highlight) override {
        if (onHighlightAsked) onHighlightAsked();
        const auto found = highlights.find(path);
        if (found != highlights.end()) highlight = found->second;
        return found != highlights.end();
    }
    bool CheckLowDiskSpace() override {
        if (galleryGone) throw KXP::Exception(KXP::Code::kFailure, "gone", 0);
        return lowDisk;
    }
    int32_t TrimVideoFile(const std::string& input, const std::string& output, double, double) override {
        return onTrim ? onTrim(input, output) : KXP::Code::kFailure;
    }
    void UpdateGalleryUsage(unsigned usageMB) override {
        settings_.SetCurrentSizeMB(usageMB);
        Tell("usage " + std::to_string(usageMB));
    }
    void NotifyUGCAdded(TrackedUGC ugc) override {
        Tell("added " + std::to_string(ugc.id) + " " + ugc.path.substr(ugc.path.rfind('/') + 1));
    }
    void NotifyUGCDeleted(const TrackedUGC& ugc) override {
        Tell("deleted " + std::to_string(ugc.id) + " " + ugc.path.substr(ugc.path.rfind('/') + 1));
    }
    void NotifyTrackerUpdate(TrackerUpdateState state) override { Tell(TrackerUpdateStateName(state)); }
    void NotifyHighlightCanceled(const Highlight& highlight) override {
        Tell("canceled " + std::to_string(highlight.GetId()));
    }
    void NotifyDiskSpaceCondition(bool low) override { Tell(low ? "disk low" : "disk fine"); }
    void NotifyGalleryIsFull(bool full) override { Tell(full ? "full" : "not full"); }

    // What has been told since the last call, with ", " between.
    std::string Told() {
        std::lock_guard<std::mutex> lock(mutex_);
        std::string all;
        for (const std::string& line : told_)
            all += (all.empty() ? "" : ", ") + line;
        told_.clear();
        return all;
    }

    std::map<std::string, Highlight> highlights;  // by path; set before the tracker looks
    std::function<void()> onHighlightAsked;
    std::function<int32_t(const std::string& input, const std::string& output)> onTrim;
    std::function<void()> onTold;  // on the thread that tells
    bool galleryGone = false;
    bool lowDisk = false;

  private:
    void Tell(std::string line) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            told_.push_back(std::move(line));
        }
        if (onTold) onTold();
    }

    Settings settings_;
    std::mutex mutex_;
    std::vector<std::string> told_;
};
