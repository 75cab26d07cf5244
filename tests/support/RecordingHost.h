// A plug-in around a tracker that keeps what the tracker notifies it of, one line each in order.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "common/results/Exception.h"
#include "common/results/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/ITrackerHost.h"

class RecordingHost : public ITrackerHost {
  public:
    Settings* GetGallerySettings() override { return &settings_; }
    Announcements& GetAnnouncements() override { return announcements_; }
    PendingHighlights& GetPendingHighlights() override { return pendingHighlights_; }
    std::string GetGalleryPath() override {
        if (galleryGone) throw KXP::Exception(KXP::Code::kFailure, "ERROR: Unable to create folder", 0);
        return settings_.GetGalleryPath() + "/";
    }
    bool CheckLowDiskSpace() override {
        if (galleryGone) throw KXP::Exception(KXP::Code::kFailure, "gone", 0);
        return lowDisk;
    }
    void UpdateGalleryUsage(unsigned usageMB) override {
        settings_.SetCurrentSizeMB(usageMB);
        Tell("usage " + std::to_string(usageMB));
    }
    void NotifyUGCAdded(TrackedUGC ugc, Announcements::Found announced, bool unannounced) override {
        const bool waited = announced == Announcements::Found::ThisWaited;
        Tell("added " + Words(ugc) + (waited ? unannounced ? ", as unannounced" : ", as announced" : ""));
    }
    void NotifyCaptureSaved(const TrackedUGC& ugc, bool) override { Tell("saved " + Words(ugc)); }
    void NotifyHighlightSaved(TrackedUGC& ugc, bool unannounced) override {
        Tell("highlight " + Words(ugc) + (unannounced ? ", unannounced" : ""));
    }
    void NotifyUGCDeleted(const TrackedUGC& ugc) override { Tell("deleted " + Words(ugc)); }
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

    std::function<void()> onTold;  // on the thread that tells
    bool galleryGone = false;
    bool lowDisk = false;

  private:
    static std::string Words(const TrackedUGC& ugc) {
        return std::to_string(ugc.id) + " " + ugc.path.substr(ugc.path.rfind('/') + 1);
    }
    void Tell(std::string line) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            told_.push_back(std::move(line));
        }
        if (onTold) onTold();
    }

    Settings settings_;
    Announcements announcements_;
    PendingHighlights pendingHighlights_;
    std::mutex mutex_;
    std::vector<std::string> told_;
};
