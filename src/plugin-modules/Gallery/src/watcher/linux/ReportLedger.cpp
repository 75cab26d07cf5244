#include "plugin-modules/Gallery/src/watcher/linux/ReportLedger.h"

#include <algorithm>

#include "base/Text.h"
#include "plugin-modules/Gallery/src/watcher/linux/PathRange.h"

namespace watcher {
namespace {

// A file that was created and not closed: its name has changed the time of its folder.
constexpr uint32_t kOpened = ItemInodeMetaMod | ItemIsFile;

// The innermost folder around the path whose own path is UTF-8.
std::string LegibleFolderOf(std::string path) {
    while (!path.empty() && !KXP::IsValidUtf8(path))
        path.erase(std::min(path.rfind('/'), path.size()));
    return path;
}

}  // namespace

bool ReportLedger::IsInGallery(const std::string& path) const {
    return path == gallery_ || IsBeneath(path, gallery_);
}

void ReportLedger::Report(const std::string& path, uint32_t flags) {
    const TimePoint now = std::chrono::steady_clock::now();
    if (KXP::IsValidUtf8(path))
        window_.Add(path, flags, now);
    else
        window_.Add(LegibleFolderOf(path), ItemInodeMetaMod, now);
}

void ReportLedger::FileComplete(const std::string& path, uint32_t flag) {
    unsettled_.erase(path);
    open_.erase(path);
    Report(path, flag | ItemIsFile);
}

void ReportLedger::FileNamed(const std::string& path) {
    const Item item = LookAt(path);
    // Linking changes a file's change time only. The old name may be gone, so the count of links is not
    // enough.
    const bool linked = item.links > 1 || item.changedNs > item.stamp.modifiedNs;
    if (item.kind == ItemKind::File && linked) return FileComplete(path, ItemCreated);
    if (!IsInGallery(path)) return Disturbed(path);
    if (item.kind == ItemKind::Unknown) return AwaitSettled(path, std::nullopt, ItemCreated | ItemIsFile);
    if (item.kind != ItemKind::File) return Disturbed(path);
    open_.insert(path);
    AwaitSettled(path, std::nullopt, kOpened);
}

void ReportLedger::FileWritten(const std::string& path) {
    if (open_.count(path) > 0) return AwaitSettled(path, std::nullopt, kOpened);
    AwaitSettled(path, std::nullopt, ItemModified | ItemIsFile);
    // Who rewrites a file in steps closes it at the end. One that is never closed, or was cut by its path, is
    // reported when nothing more seems to come.
    unsettled_[path].quiet = kRewriteSettles * settle_;
}

void ReportLedger::FileTouched(const std::string& path) {
    const Item item = LookAt(path);
    if (item.kind != ItemKind::File) return Disturbed(path);
    const std::optional<Stamp> known = known_.Find(path);
    if (known && *known == item.stamp) return;
    if (open_.count(path) > 0 || unsettled_.count(path) > 0) return FileWritten(path);
    Report(path, ItemModified | ItemIsFile);
}

void ReportLedger::Disturbed(const std::string& path) {
    Report(path, ItemInodeMetaMod);
}

void ReportLedger::FileGone(const std::string& path, uint32_t flag) {
    known_.Erase(path);
    unsettled_.erase(path);
    open_.erase(path);
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
    EraseWithBeneath(open_, path);
}

ReportLedger::Folders ReportLedger::Compare(const std::string& folder, const FolderSnapshot& disk,
                                            bool silent) {
    Folders folders;
    KnownItems& known = known_.Folder(folder);
    if (known.IsEmpty()) known.Reserve(disk.entries.size());
    for (const Difference& difference : Reconcile(known, disk)) {
        if (silent && IsOld(difference)) {
            known.Set(difference.name, difference.found->item.stamp);
            continue;
        }
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
        Found(path, difference, news);
    }
    return folders;
}

// Whether a silent comparison has only to record it.
bool ReportLedger::IsOld(const Difference& difference) const {
    if (!difference.found || (difference.flags & ItemRemoved) != 0) return false;
    const Item& item = difference.found->item;
    return !IsNews(item) && (item.stamp.folder || !IsYoung(item));
}

void ReportLedger::Found(const std::string& path, const Difference& difference, bool news) {
    const Stamp& stamp = difference.found->item.stamp;
    const bool young = !stamp.folder && IsYoung(difference.found->item);
    if (young) AwaitSettled(path, stamp, news ? ItemCreated | ItemIsFile : 0);
    if (young && news) return;
    known_.Set(path, stamp);
    if (news) Report(path, difference.flags);
}

void ReportLedger::NoteReported(const WatchEvent& event, WatchAction action, const Item& item) {
    if (action == WatchAction::Track && item.kind == ItemKind::File && IsInGallery(event.path))
        known_.Set(event.path, item.stamp);
    if (item.kind == ItemKind::Unknown && DisturbsTimes(event.flags))
        return AwaitSettled(event.path, std::nullopt, event.flags);
    const bool went = (event.flags & (ItemRemoved | ItemRenamed)) != 0;
    if (!went || action == WatchAction::Untrack || event.path == gallery_ || !IsInGallery(event.path)) return;
    known_.SetUnseen(event.path, (event.flags & ItemIsDir) != 0);
}

// A time in the future comes from another machine's clock and says nothing about the age.
bool ReportLedger::IsYoung(const Item& item) const {
    const int64_t age = FileClockNs() - item.stamp.modifiedNs;
    return age >= 0 && age < std::chrono::nanoseconds(settle_).count();
}

void ReportLedger::AwaitSettled(const std::string& path, const std::optional<Stamp>& stamp, uint32_t flags) {
    const TimePoint now = std::chrono::steady_clock::now();
    const auto [entry, isNew] = unsettled_.try_emplace(path, Unsettled{now, stamp, flags, settle_});
    if (!isNew) {
        // A look that finds nothing new does not start the time again; an event always does.
        if (!stamp || entry->second.stamp != stamp) entry->second.seen = now;
        entry->second.stamp = stamp;
        entry->second.flags |= flags;
    }
    nextLook_ = std::min(nextLook_, entry->second.seen + entry->second.quiet);
}

void ReportLedger::LookAgain(TimePoint now) {
    if (now < nextLook_) return;
    nextLook_ = TimePoint::max();
    for (auto entry = unsettled_.begin(); entry != unsettled_.end();) {
        if (HasSettled(entry->first, entry->second, now)) {
            entry = unsettled_.erase(entry);
            continue;
        }
        nextLook_ = std::min(nextLook_, entry->second.seen + entry->second.quiet);
        ++entry;
    }
}

bool ReportLedger::HasSettled(const std::string& path, Unsettled& entry, TimePoint now) {
    if (now < entry.seen + entry.quiet) return false;
    const Item item = LookAt(path);
    const bool changed = item.kind == ItemKind::File && entry.stamp && item.stamp != *entry.stamp;
    if (changed) entry = {now, item.stamp, entry.flags | ItemCreated | ItemIsFile, entry.quiet};
    if (item.kind == ItemKind::Unknown) entry.seen = now;
    if (changed || item.kind == ItemKind::Unknown) return false;
    if (item.kind == ItemKind::None) {
        const bool wasFolder = (entry.flags & ItemIsDir) != 0;
        entry.flags |= wasFolder ? ItemRemoved : ItemRemoved | ItemIsFile;
    }
    if (item.kind == ItemKind::File && (entry.flags & (ItemCreated | ItemModified)) != 0)
        known_.Set(path, item.stamp);
    if (entry.flags != 0) Report(path, entry.flags);
    return true;
}

void ReportLedger::AddUnreported(UnreportedPaths& paths) const {
    for (const auto& [path, entry] : unsettled_) {
        if (KXP::IsValidUtf8(path))
            paths.incomplete.push_back(path);
        else
            paths.disturbed.push_back(LegibleFolderOf(path));
    }
    for (const std::string& path : open_) {
        if (unsettled_.count(path) == 0 && KXP::IsValidUtf8(path)) paths.changed.push_back(path);
    }
}

}  // namespace watcher
