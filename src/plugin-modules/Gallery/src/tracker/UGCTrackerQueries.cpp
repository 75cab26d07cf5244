// Queries.
#include <algorithm>
#include <utility>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "plugin-modules/Gallery/src/media/CaptureFolder.h"
#include "plugin-modules/Gallery/src/tracker/FailedLook.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

using KXP::RetVal;
namespace Code = KXP::Code;

UGCTracker::RecordPtr UGCTracker::FindRecord(const std::string& path) const {
    if (RecordPtr found = record_.At(path)) return found;
    const std::optional<std::string> place = place_.CapturePathOf(path);
    return place ? record_.At(*place) : nullptr;
}

RetVal UGCTracker::GetUGCData(const std::string& path, TrackedUGC& out) const {
    const RecordPtr record = FindRecord(path);
    if (!record) return {Code::kNotFound, "UGC not found", 0};
    out = *record;
    return {};
}

// Those whose files exist. Removes the others from the record.
std::vector<UGCTracker::RecordPtr> UGCTracker::Sanitize(std::vector<RecordPtr> records) {
    const auto gone = std::stable_partition(records.begin(), records.end(),
                                            [](const RecordPtr& record) { return !IsGone(record->path); });
    std::vector<std::string> paths;
    for (auto record = gone; record != records.end(); ++record)
        paths.push_back((*record)->path);
    records.erase(gone, records.end());
    SanitizePaths(paths);
    return records;
}

void UGCTracker::SanitizePaths(const std::vector<std::string>& gone) {
    if (gone.empty()) return;
    (void)place_.IsScanned();  // the drive may be back before the write
    for (size_t found = record_.Remove(gone); found < gone.size(); ++found)
        KXP_LOG(KXP::LogFailure, "Error sanitizing erroneous UGC");
    (void)Write(Sum::Renew);
    news().Drain();
}

std::vector<TrackedUGC> UGCTracker::GetSanatizedGameUGC(const std::string& game) {
    const std::vector<RecordPtr> records = Sanitize(record_.OfGame(game));
    std::vector<TrackedUGC> found;
    found.reserve(records.size());
    for (const RecordPtr& record : records)
        found.push_back(*record);
    return found;
}

std::vector<TrackedUGC> UGCTracker::GetGameUGC(const std::string& game) {
    std::vector<TrackedUGC> found = GetSanatizedGameUGC(game);
    host_.GetPendingHighlights().GetPendingHighlights(found, game, "");
    std::sort(found.begin(), found.end(),
              [](const TrackedUGC& a, const TrackedUGC& b) { return a.id > b.id; });
    return found;
}

std::vector<TrackedUGC> UGCTracker::GetRecentUGC(unsigned count) {
    std::vector<TrackedUGC> out;
    const size_t wanted = std::min<size_t>(count, record_.size());
    if (wanted == 0) {
        if (count > 0) KXP_LOG(KXP::LogFailure, "No UGCs captured yet");
        return out;
    }
    out.reserve(wanted);
    // From the newest on until there are enough; older records are not checked.
    std::vector<std::string> gone;
    RecordStore::IdKey end = RecordStore::NewestEnd();
    std::vector<RecordPtr> next;
    do {
        next = record_.Newest(wanted - out.size(), end);
        for (const RecordPtr& record : next) {
            if (!IsGone(record->path)) {
                out.push_back(*record);
            } else {
                gone.push_back(record->path);
            }
        }
    } while (!next.empty() && out.size() < wanted);
    SanitizePaths(gone);
    return out;
}

void UGCTracker::GetAppStats(const std::string& game, unsigned& videos, unsigned& images) {
    videos = 0;
    images = 0;
    for (const RecordPtr& record : Sanitize(record_.OfGame(game))) {
        if (record->fileType == "video") ++videos;
        if (record->fileType == "image") ++images;
    }
}

RetVal UGCTracker::DeleteUGC(const TrackedUGC& record) {
    RetVal deleted;
    const bool keep = !IsGone(record.path) && !media::MayDeleteCapture(record.path, gallery());
    deleted.code = keep ? Code::kAccessDenied : KXP::FileDelete(record.path, false);
    if (deleted.Failed()) deleted.text = "Failed to delete file";
    KXP::DirectoryRemove(KXP::ParentOf(record.path));
    return deleted;
}

unsigned UGCTracker::GetCurrentSizeMB() const {
    return static_cast<unsigned>(record_.SumKB() >> 10);
}
