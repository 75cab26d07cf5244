#include "plugin-modules/Gallery/src/tracker/UGCFileWatcherCallback.h"

#include <utility>

#include "base/Path.h"
#include "common/files/DirUtil.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

UGCFileWatcherCallback::UGCFileWatcherCallback(UGCTracker* tracker, std::string ownFolder)
    : tracker_(tracker), ownFolder_(std::move(ownFolder)) {}

void UGCFileWatcherCallback::Track(std::string path, bool isFolder) {
    if (IsOwnFile(path)) return;
    tracker_->NoteDisturbed(path);
    isFolder ? tracker_->TrackFolder(path) : tracker_->TrackWatchedFile(path);
}

void UGCFileWatcherCallback::Untrack(std::string path) {
    if (IsOwnFile(path)) return;
    tracker_->NoteDisturbed(path);
    tracker_->UntrackFile(path);
}

void UGCFileWatcherCallback::Disturbed(std::string path) {
    if (!IsOwnFile(path)) tracker_->NoteDisturbed(path);
}

bool UGCFileWatcherCallback::IsOwnFile(const std::string& path) const {
    // The watched tree may contain the share folder, which the tracker writes to with each capture. The name
    // is compared first because comparing folders takes system calls.
    return IsShareFileName(KXP::NameOf(path)) && KXP::SamePath(KXP::ParentOf(path), ownFolder_);
}
