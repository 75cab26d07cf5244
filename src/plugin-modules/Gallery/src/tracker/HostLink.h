// A tracker's way to its host, until it is abandoned: it may go on much later, when its disk answers again,
// and the host has another tracker by then.
#pragma once

#include <atomic>
#include <string>
#include <utility>

#include "plugin-modules/Gallery/src/tracker/ITrackerHost.h"

// Any thread. What is called while the link is cut may still be under way.
class HostLink : public ITrackerHost {
  public:
    explicit HostLink(ITrackerHost& host) : host_(host) {}

    // Afterwards the host is only asked.
    void Cut() { cut_ = true; }

    Settings* GetGallerySettings() override { return host_.GetGallerySettings(); }
    Announcements& GetAnnouncements() override { return host_.GetAnnouncements(); }
    PendingHighlights& GetPendingHighlights() override { return host_.GetPendingHighlights(); }
    std::string GetGalleryPath() override { return host_.GetGalleryPath(); }
    bool CheckLowDiskSpace() override { return host_.CheckLowDiskSpace(); }

    // In the settings.
    void SetTrackerState(TrackerUpdateState state) {
        if (!cut_) GetGallerySettings()->UpdateTrackerSettings(state);
    }
    void SetUsage(unsigned usageMB) {
        if (!cut_) GetGallerySettings()->SetCurrentSizeMB(usageMB);
    }

    void UpdateGalleryUsage(unsigned usageMB) override {
        if (!cut_) host_.UpdateGalleryUsage(usageMB);
    }
    void NotifyUGCAdded(TrackedUGC ugc, Announcements::Found announced, bool unannounced) override {
        if (!cut_) host_.NotifyUGCAdded(std::move(ugc), announced, unannounced);
    }
    void NotifyCaptureSaved(const TrackedUGC& ugc, bool unannounced) override {
        if (!cut_) host_.NotifyCaptureSaved(ugc, unannounced);
    }
    void NotifyHighlightSaved(TrackedUGC& ugc, bool unannounced) override {
        if (!cut_) host_.NotifyHighlightSaved(ugc, unannounced);
    }
    void NotifyUGCDeleted(const TrackedUGC& ugc) override {
        if (!cut_) host_.NotifyUGCDeleted(ugc);
    }
    void NotifyTrackerUpdate(TrackerUpdateState state) override {
        if (!cut_) host_.NotifyTrackerUpdate(state);
    }
    void NotifyHighlightCanceled(const Highlight& highlight) override {
        if (!cut_) host_.NotifyHighlightCanceled(highlight);
    }
    void NotifyDiskSpaceCondition(bool low) override {
        if (!cut_) host_.NotifyDiskSpaceCondition(low);
    }
    void NotifyGalleryIsFull(bool full) override {
        if (!cut_) host_.NotifyGalleryIsFull(full);
    }

  private:
    ITrackerHost& host_;
    std::atomic<bool> cut_{false};
};
