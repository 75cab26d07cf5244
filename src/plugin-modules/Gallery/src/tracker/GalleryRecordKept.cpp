// What people gave the captures on record.
#include <cerrno>
#include <utility>

#include <sys/stat.h>

#include "plugin-modules/Gallery/src/tracker/FailedLook.h"
#include "plugin-modules/Gallery/src/tracker/GalleryRecord.h"

// What is kept of the file, which may have been moved. A copy of a file that is still there is another one.
KeptPtr GalleryRecord::KeptOf(const TrackedUGC& record) const {
    const KeptPtr kept = kept_.Find(record.path, record.stamp);
    const bool stays = kept && kept->path != record.path && StampAt(kept->path) == kept->stamp;
    return stays ? nullptr : kept;
}

KeptFacts GalleryRecord::GivenTo(const TrackedUGC& record) const {
    const KeptPtr kept = kept_.Find(record.path, record.stamp);
    return FactsOf(record, kept && kept->path == record.path && kept->facts.told);
}

void GalleryRecord::Keep(const TrackedUGC& record, const KeptFacts& facts) {
    const KeptPtr kept = kept_.Find(record.path, record.stamp);
    const bool isOfFile = kept && kept->path == record.path && kept->stamp == record.stamp;
    const bool isThere = isOfFile ? kept->facts == facts && kept->goneSince == 0 : facts.IsEmpty();
    if (!isThere) kept_.Put({record.path, record.stamp, facts});
}

void GalleryRecord::ShowKept(const std::string& path, const FileStamp& stamp) {
    const KXP::MutexLock lock(mutex_);
    if (const RecordPtr found = records_.FindByPath(path)) {
        const KeptPtr kept = kept_.LatestOf(found->path, stamp);
        TrackedUGC record = *found;
        Apply(kept ? kept->facts : KeptFacts{}, record);
        records_.Change(std::move(record));
        news_.Add(News::Change::Untracked, nullptr);
    }
}

// Not those of other galleries: they may be on a drive that is away, or does not answer.
void GalleryRecord::SortOutKept(const std::string& gallery, const std::atomic<bool>& stop) {
    for (const KeptPtr& kept : kept_.Snapshot()) {
        if (stop) return;
        if (kept->path.compare(0, gallery.size(), gallery) != 0) continue;
        const RecordPtr record = At(kept->path);
        struct stat status {};
        const bool onRecord = record && record->stamp.SameContent(kept->stamp);
        const bool looked = onRecord || lstat(kept->path.c_str(), &status) == 0;
        if (!looked && !MeansGone(errno)) continue;
        if (onRecord || (looked && StampOf(status).SameContent(kept->stamp))) {
            if (kept->goneSince != 0) kept_.Put(*kept);
        } else {
            kept_.NoteGone(kept->path, kept->stamp);
        }
    }
    (void)kept_.Save();
    (void)kept_.CompactIfLong();
}
