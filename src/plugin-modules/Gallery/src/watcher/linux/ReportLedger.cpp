#include "plugin-modules/Gallery/src/watcher/linux/ReportLedger.h"

#include <algorithm>

#include "plugin-modules/Gallery/src/watcher/linux/PathRange.h"

namespace watcher {

bool ReportLedger::IsInGallery(const std::string& path) const {
    return path == gallery_ || IsBeneath(path, gallery_);
}

void ReportLedger::Report(const std::string& path, uint32_t flags) {
    window_.Add(path, flags, std::chrono::steady_clock::now());
}

void ReportLedger::FileComplete(const std::string& path, uint32_t flag) {
    unsettled_.erase(path);
    Report(path, flag | ItemIsFile);
}

void ReportLedger::FileNamed(const std::string& path) {
    const Item item = LookAt(path);
    // Linking changes a file's change time only. The old name may be gone, so the count of links is not
    // enough.
    const bool linked = item.links > 1 || item.changedNs > item.stamp.modifiedNs;
    if (item.kind == ItemKind::File && linked) FileComplete(path, ItemCreated);
}

void ReportLedger::FileGone(const std::string& path, uint32_t flag) {
    known_.Erase(path);
    unsettled_.erase(path);
    Report(path, flag | ItemIsFile);
}

void ReportLedger::FolderAppeared(const std::string& path, uint32_t flag) {
    const Item item = LookAt(path);
    if (item.kind == ItemKind::Folder && IsInGallery(path)) known_.Set(path, item.stamp);
    Report(path, flag | ItemIsDir);
}

void ReportLedger::FolderGone(const std::string& path, uint32_t flag) {
    known_.Erase(path);
    unsettled_.erase(path);
    Report(path, flag | ItemIsDir);
    // One event each, because another folder may take the place of this one before they are reported.
    for (const WatchEvent& event : known_.TakeBeneath(path, flag))
        Report(event.path, event.flags);
    // Unreported files too: the listener may have found them when the folder was reported.
    const auto [first, last] = Beneath(unsettled_, path);
    for (auto entry = first; entry != last; ++entry)
        Report(entry->first, flag | ItemIsFile);
    unsettled_.erase(first, last);
}

ReportLedger::Folders ReportLedger::Compare(const std::string& folder, const FolderSnapshot& disk,
                                            bool silent) {
    Folders folders;
    const KnownItems nothing;
    const bool inGallery = IsInGallery(folder);
    for (const Difference& difference : Reconcile(inGallery ? known_.Folder(folder) : nothing, disk)) {
        const std::string path = folder + "/" + difference.name;
        if (!difference.found) {
            const bool wasFolder = (difference.flags & ItemIsDir) != 0;
            if (wasFolder) folders.gone.push_back(path);
            wasFolder ? FolderGone(path, ItemRemoved) : FileGone(path, ItemRemoved);
            continue;
        }
        const bool isFolder = difference.found->item.stamp.folder;
        if (!isFolder && (difference.flags & ItemRemoved) != 0) {
            folders.gone.push_back(path);
            FolderGone(path, ItemRemoved);
        }
        const bool news = !silent || IsNews(difference.found->item);
        if (news && isFolder) folders.appeared.push_back(path);
        if (news || inGallery) Found(path, difference, news);
    }
    return folders;
}

void ReportLedger::Found(const std::string& path, const Difference& difference, bool news) {
    const Stamp& stamp = difference.found->item.stamp;
    const bool young = !stamp.folder && IsYoung(difference.found->item);
    if (young) AwaitSettled(path, stamp, news);
    if (young && news) return;
    known_.Set(path, stamp);
    if (news) Report(path, difference.flags);
}

void ReportLedger::NoteReported(const WatchEvent& event, WatchAction action, const Item& item) {
    if (action == WatchAction::Track && item.kind == ItemKind::File && IsInGallery(event.path))
        known_.Set(event.path, item.stamp);
    const bool went = (event.flags & (ItemRemoved | ItemRenamed)) != 0;
    if (!went || action == WatchAction::Untrack || event.path == gallery_ || !IsInGallery(event.path)) return;
    known_.SetUnseen(event.path, (event.flags & ItemIsDir) != 0);
}

// A time in the future comes from another machine's clock and says nothing about the age.
bool ReportLedger::IsYoung(const Item& item) const {
    const int64_t age = FileClockNs() - item.stamp.modifiedNs;
    return age >= 0 && age < std::chrono::nanoseconds(settle_).count();
}

void ReportLedger::AwaitSettled(const std::string& path, const Stamp& stamp, bool news) {
    const TimePoint now = std::chrono::steady_clock::now();
    const auto [entry, isNew] = unsettled_.try_emplace(path, Unsettled{stamp, now, news});
    if (!isNew && entry->second.stamp != stamp) entry->second = {stamp, now, true};
    nextLook_ = std::min(nextLook_, entry->second.seen + settle_);
}

void ReportLedger::LookAgain(TimePoint now) {
    if (now < nextLook_) return;
    nextLook_ = TimePoint::max();
    for (auto entry = unsettled_.begin(); entry != unsettled_.end();) {
        if (HasSettled(entry->first, entry->second, now)) {
            entry = unsettled_.erase(entry);
            continue;
        }
        nextLook_ = std::min(nextLook_, entry->second.seen + settle_);
        ++entry;
    }
}

bool ReportLedger::HasSettled(const std::string& path, Unsettled& entry, TimePoint now) {
    if (now < entry.seen + settle_) return false;
    const Item item = LookAt(path);
    if (item.kind == ItemKind::None) Report(path, ItemRemoved | ItemIsFile);
    if (item.kind != ItemKind::File) return true;
    if (item.stamp != entry.stamp) {
        entry = {item.stamp, now, true};
        return false;
    }
    if (!entry.news) return true;
    if (IsInGallery(path)) known_.Set(path, item.stamp);
    Report(path, ItemCreated | ItemIsFile);
    return true;
}

}  // namespace watcher
