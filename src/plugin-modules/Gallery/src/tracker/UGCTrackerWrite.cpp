// Writes of the tracker's file, and what the journal asks of the record.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <utility>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"
#include "plugin-modules/Gallery/src/tracker/FailedLook.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

namespace {

// Longer than the watcher's window, so that the changes known now have been reported by then.
constexpr std::chrono::milliseconds kReleaseDelay{1500};
// With more changes than this on their way, more will be known soon.
constexpr size_t kMostUnreported = 256;

}  // namespace

KXP::RetVal UGCTracker::Write(Sum sum) {
    // First, so that it is never older than what the tracker's file says.
    (void)SaveKept();
    return journal_.WriteUGCToTracker(sum);
}

KXP::RetVal UGCTracker::SaveKept() {
    if (journal_.IsAbandoned() && !journal_.MayWrite()) return {KXP::Code::kFailure, "No tracker", 0};
    return kept().Save();
}

void UGCTracker::PaySum() {
    if (!journal_.OwesSum()) return;
    (void)Write(Sum::Renew);
    news().Drain();
}

void UGCTracker::NoteDisturbed(const std::string& path) {
    if (place_.Counts(path)) journal_.NoteDisturbed(path);
}

void UGCTracker::QueueRelease() {
    queue_.EnqueueNotification(queue_.Now() + kReleaseDelay, [this] {
        journal_.ReleaseSum();
        news().Drain();
    });
}

IJournalSource::Known UGCTracker::AskKnown() {
    Known known;
    if (!backlog_.IsEmpty() || !place_.IsScanned()) return known;
    const std::shared_ptr<IFileWatcher> watcher = Watcher();
    known.all = !watcher;
    if (!watcher) return known;
    auto unreported = watcher->Unreported(stopping_ ? SIZE_MAX : kMostUnreported);
    if (!unreported) return known;
    known.exact = unreported->exact;
    known.unreported = std::move(unreported->changed);
    std::move(unreported->incomplete.begin(), unreported->incomplete.end(),
              std::back_inserter(known.unreported));
    known.all = std::all_of(known.unreported.begin(), known.unreported.end(),
                            [this](const std::string& path) { return IsSettled(path); });
    std::move(unreported->disturbed.begin(), unreported->disturbed.end(),
              std::back_inserter(known.unreported));
    return known;
}

// Whether the record agrees with the disk about the path.
bool UGCTracker::IsSettled(const std::string& path) const {
    struct stat status {};
    const bool exists = lstat(path.c_str(), &status) == 0;
    if (!exists && !MeansGone(errno)) return false;
    switch (place_.KindOf(path)) {
        case GalleryPlace::Kind::None:
            return true;
        case GalleryPlace::Kind::Gallery:
            return false;
        case GalleryPlace::Kind::Game:
            return exists && S_ISDIR(status.st_mode) ? IsFolderSettled(path) : record_.PathsIn(path).empty();
        case GalleryPlace::Kind::Capture:
            break;
    }
    const RecordPtr record = record_.At(path);
    if (!exists || !S_ISREG(status.st_mode)) return !record;
    const FileStamp stamp = StampOf(status);
    return record ? record->stamp == stamp : backlog_.WasRefused(path, stamp) || !media::FormatOf(path);
}

bool UGCTracker::IsFolderSettled(const std::string& folder) const {
    const FoundFiles found = ScanFolder(folder);
    return found.unread.empty() &&
           std::all_of(found.files.begin(), found.files.end(),
                       [this](const FoundFile& file) { return IsSettled(file.path); });
}
