#include "plugin-modules/Gallery/src/watcher/linux/Reconcile.h"

#include <string_view>
#include <unordered_set>

#include "plugin-modules/Gallery/src/watcher/linux/PathRange.h"

namespace watcher {
namespace {

uint32_t KindFlag(const Stamp& stamp) {
    return stamp.folder ? ItemIsDir : ItemIsFile;
}

uint32_t ChangeOf(const Stamp* known, const Stamp& disk) {
    if (!known) return ItemCreated | KindFlag(disk);
    // Another folder has taken the folder's place, or a file that of a folder, or the other way round.
    if (known->folder || disk.folder) return ItemCreated | ItemRemoved | KindFlag(disk);
    return ItemModified | ItemIsFile;
}

}  // namespace

std::vector<Difference> Reconcile(const KnownItems& known, const FolderSnapshot& disk) {
    std::vector<Difference> differences;
    std::unordered_set<std::string_view> present;
    for (const FoundItem& entry : disk.entries)
        present.insert(entry.name);
    for (const auto& [name, stamp] : known) {
        if (present.count(name) == 0) differences.push_back({name, ItemRemoved | KindFlag(stamp), nullptr});
    }
    for (const FoundItem& entry : disk.entries) {
        if (entry.item.kind == ItemKind::Unknown) continue;
        const auto found = known.find(entry.name);
        const Stamp* before = found == known.end() ? nullptr : &found->second;
        if (before && *before == entry.item.stamp) continue;
        differences.push_back({entry.name, ChangeOf(before, entry.item.stamp), &entry});
    }
    return differences;
}

void KnownTree::Set(const std::string& path, const Stamp& stamp) {
    const size_t slash = path.rfind('/');
    const auto folder = folders_.find(path.substr(0, slash));
    if (folder != folders_.end()) folder->second[path.substr(slash + 1)] = stamp;
}

void KnownTree::Erase(const std::string& path) {
    const size_t slash = path.rfind('/');
    const auto folder = folders_.find(path.substr(0, slash));
    if (folder != folders_.end()) folder->second.erase(path.substr(slash + 1));
}

const Stamp* KnownTree::Find(const std::string& path) const {
    const size_t slash = path.rfind('/');
    const auto folder = folders_.find(path.substr(0, slash));
    if (folder == folders_.end()) return nullptr;
    const auto item = folder->second.find(path.substr(slash + 1));
    return item == folder->second.end() ? nullptr : &item->second;
}

void KnownTree::SetUnseen(const std::string& path, bool folder) {
    const size_t slash = path.rfind('/');
    Stamp unseen;
    unseen.folder = folder;
    folders_[path.substr(0, slash)].try_emplace(path.substr(slash + 1), unseen);
}

std::vector<WatchEvent> KnownTree::TakeBeneath(const std::string& folder, uint32_t flags) {
    std::vector<WatchEvent> events;
    const auto take = [&](const auto& entry) {
        for (const auto& [name, stamp] : entry.second)
            events.push_back({entry.first + "/" + name, flags | KindFlag(stamp)});
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
