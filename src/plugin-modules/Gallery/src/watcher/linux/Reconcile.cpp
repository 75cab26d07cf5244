#include "plugin-modules/Gallery/src/watcher/linux/Reconcile.h"

#include <string_view>
#include <unordered_set>

#include "plugin-modules/Gallery/src/watcher/linux/PathRange.h"

namespace watcher {
namespace {

uint32_t KindFlag(const Stamp& stamp) {
    return stamp.folder ? ItemIsDir : ItemIsFile;
}

uint32_t ChangeOf(const std::optional<Stamp>& known, const Stamp& disk) {
    if (!known) return ItemCreated | KindFlag(disk);
    // Another folder has taken the folder's place, or a file that of a folder, or the other way round.
    if (known->folder || disk.folder) return ItemCreated | ItemRemoved | KindFlag(disk);
    return ItemModified | ItemIsFile;
}

std::string_view NameIn(const std::string& path, size_t slash) {
    return std::string_view(path).substr(slash + 1);
}

}  // namespace

std::vector<Difference> Reconcile(const KnownItems& known, const FolderSnapshot& disk) {
    std::vector<Difference> differences;
    if (!known.IsEmpty()) {
        std::unordered_set<std::string_view> present;
        for (const FoundItem& entry : disk.entries)
            present.insert(entry.name);
        known.ForEach([&](std::string_view name, const Stamp& stamp) {
            if (present.count(name) == 0)
                differences.push_back({std::string(name), ItemRemoved | KindFlag(stamp), nullptr});
        });
    }
    for (const FoundItem& entry : disk.entries) {
        if (entry.item.kind == ItemKind::Unknown) continue;
        const std::optional<Stamp> before = known.Find(entry.name);
        if (before && *before == entry.item.stamp) continue;
        differences.push_back({entry.name, ChangeOf(before, entry.item.stamp), &entry});
    }
    return differences;
}

void KnownTree::Set(const std::string& path, const Stamp& stamp) {
    const size_t slash = path.rfind('/');
    const auto folder = folders_.find(path.substr(0, slash));
    if (folder != folders_.end()) folder->second.Set(NameIn(path, slash), stamp);
}

void KnownTree::Erase(const std::string& path) {
    const size_t slash = path.rfind('/');
    const auto folder = folders_.find(path.substr(0, slash));
    if (folder != folders_.end()) folder->second.Erase(NameIn(path, slash));
}

std::optional<Stamp> KnownTree::Find(const std::string& path) const {
    const size_t slash = path.rfind('/');
    const auto folder = folders_.find(path.substr(0, slash));
    return folder == folders_.end() ? std::nullopt : folder->second.Find(NameIn(path, slash));
}

void KnownTree::SetUnseen(const std::string& path, bool folder) {
    const size_t slash = path.rfind('/');
    Stamp unseen;
    unseen.folder = folder;
    KnownItems& items = folders_[path.substr(0, slash)];
    if (!items.Find(NameIn(path, slash))) items.Set(NameIn(path, slash), unseen);
}

std::vector<WatchEvent> KnownTree::TakeBeneath(const std::string& folder, uint32_t flags) {
    std::vector<WatchEvent> events;
    const auto take = [&](const auto& entry) {
        entry.second.ForEach([&](std::string_view name, const Stamp& stamp) {
            events.push_back({entry.first + "/" + std::string(name), flags | KindFlag(stamp)});
        });
    };
    const auto self = folders_.find(folder);
    if (self != folders_.end()) take(*self);
    const auto [first, last] = Beneath(folders_, folder);
    for (auto entry = first; entry != last; ++entry)
        take(*entry);
    EraseWithBeneath(folders_, folder);
    return events;
}

}  // namespace watcher
