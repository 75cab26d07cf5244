// What the tracker needs of the plug-in around it.
#pragma once

#include <cstdint>
#include <string>

#include "libraries/share-common/Highlight.h"
#include "plugin-modules/Gallery/src/settings/Settings.h"
#include "plugin-modules/Gallery/src/tracker/TrackedUGC.h"

// Called from the tracker's threads. The Notify functions and UpdateGalleryUsage end in the container's
// callback: the tracker holds none of its locks across them.
class ITrackerHost {
  public:
    virtual ~ITrackerHost() = default;

    virtual Settings* GetGallerySettings() = 0;
    // The gallery of a tracker that is made now. Ends in "/". Throws KXP::Exception when the folder is not
    // there and cannot be made.
    virtual std::string GetGalleryPath() = 0;
    // What a saved-notification told of the highlight at `path`; false when none waits for it. Takes the
    // notification mutex alone, so it may be called under the tracker's.
    virtual bool GetHighlightInfo(const std::string& path, Highlight& highlight) = 0;
    // Whether the user's volume or the gallery's is nearly full.
    virtual bool CheckLowDiskSpace() = 0;

    // Cuts `length` milliseconds from `start` on out of a video into a new file: 0 or a negative code. May
    // take long.
    virtual int32_t TrimVideoFile(const std::string& input, const std::string& output, double start,
                                  double length) = 0;

    virtual void UpdateGalleryUsage(unsigned usageMB) = 0;
    virtual void NotifyUGCAdded(TrackedUGC ugc) = 0;
    virtual void NotifyUGCDeleted(const TrackedUGC& ugc) = 0;
    virtual void NotifyTrackerUpdate(TrackerUpdateState state) = 0;
    virtual void NotifyHighlightCanceled(const Highlight& highlight) = 0;
    virtual void NotifyDiskSpaceCondition(bool low) = 0;
    virtual void NotifyGalleryIsFull(bool full) = 0;
};
