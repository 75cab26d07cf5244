// What the tracker needs of the plug-in around it.
#pragma once

#include <string>

#include "libraries/share-common/Highlight.h"
#include "plugin-modules/Gallery/src/settings/Settings.h"
#include "plugin-modules/Gallery/src/tracker/Announcements.h"
#include "plugin-modules/Gallery/src/tracker/PendingHighlights.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

// Called from the tracker's threads. The Notify functions and UpdateGalleryUsage end in the container's
// callback: the tracker holds none of its locks across them.
class ITrackerHost {
  public:
    virtual ~ITrackerHost() = default;

    virtual Settings* GetGallerySettings() = 0;
    // They outlive the tracker, because an announced file may be found by the next gallery's tracker.
    virtual Announcements& GetAnnouncements() = 0;
    // They too: a highlight may be in flight while the gallery is changed.
    virtual PendingHighlights& GetPendingHighlights() = 0;
    // The current gallery. Ends in "/". Throws KXP::Exception when the folder does not exist and cannot be
    // created.
    virtual std::string GetGalleryPath() = 0;
    // Whether the user's volume or the gallery's is nearly full.
    virtual bool CheckLowDiskSpace() = 0;

    virtual void UpdateGalleryUsage(unsigned usageMB) = 0;
    // A file got on record. `unannounced` is that of its announcement, if one waited.
    virtual void NotifyUGCAdded(TrackedUGC ugc, Announcements::Found announced, bool unannounced) = 0;
    // A file was announced that is on record.
    virtual void NotifyCaptureSaved(const TrackedUGC& ugc, bool unannounced) = 0;
    virtual void NotifyHighlightSaved(TrackedUGC& ugc, bool unannounced) = 0;
    virtual void NotifyUGCDeleted(const TrackedUGC& ugc) = 0;
    virtual void NotifyTrackerUpdate(TrackerUpdateState state) = 0;
    virtual void NotifyHighlightCanceled(const Highlight& highlight) = 0;
    virtual void NotifyDiskSpaceCondition(bool low) = 0;
    virtual void NotifyGalleryIsFull(bool full) = 0;
};
