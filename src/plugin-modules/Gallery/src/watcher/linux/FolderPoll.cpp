#include "plugin-modules/Gallery/src/watcher/linux/FolderPoll.h"

#include <algorithm>
#include <iterator>

#include <sys/vfs.h>

#include "plugin-modules/Gallery/src/watcher/linux/PathRange.h"

namespace watcher {
namespace {

// The coarsest resolution of times on a volume, that of FAT.
constexpr int64_t kCoarsestTimeNs = 2000000000;

// NFS, SMB 1 to 3, AFS, Ceph, Coda and 9P, some of which no header names; and FUSE, where a local file system
// cannot be distinguished from one on the network.
constexpr uint32_t kNetworkTypes[] = {0x6969,     0x517B,     0xFF534D42, 0xFE534D42, 0x5346414F,
                                      0x00C36400, 0x73757245, 0x01021997, 0x65735546};

}  // namespace

bool IsOnNetwork(const std::string& path) {
    struct statfs status {};
    if (statfs(path.c_str(), &status) != 0) return false;
    const auto type = static_cast<uint32_t>(status.f_type);
    return std::find(std::begin(kNetworkTypes), std::end(kNetworkTypes), type) != std::end(kNetworkTypes);
}

void FolderPoll::Add(const std::string& folder, const Item& state) {
    Stamp stamp = state.stamp;
    if (FileClockNs() - stamp.modifiedNs < kCoarsestTimeNs) stamp.modifiedNs = 0;
    folders_[folder] = stamp;
}

bool FolderPoll::IsUnread(const std::string& folder) const {
    const auto found = folders_.find(folder);
    return found != folders_.end() && found->second == Stamp{};
}

std::vector<std::string> FolderPoll::Unread() const {
    std::vector<std::string> unread;
    for (const auto& [folder, stamp] : folders_) {
        if (stamp == Stamp{}) unread.push_back(folder);
    }
    return unread;
}

void FolderPoll::RemoveWithBeneath(const std::string& folder) {
    EraseWithBeneath(folders_, folder);
}

void FolderPoll::StartRound() {
    reached_.clear();
    inRound_ = true;
}

std::vector<std::string> FolderPoll::CheckNext(size_t count) {
    std::vector<std::string> changed;
    auto entry = folders_.upper_bound(reached_);
    for (; entry != folders_.end() && count > 0; ++entry, --count) {
        reached_ = entry->first;
        const Item item = LookAt(reached_, true);
        if (item.kind != ItemKind::Folder) continue;  // its parent reports that
        const Stamp& before = entry->second;
        if (item.stamp.inode != before.inode || item.stamp.modifiedNs != before.modifiedNs)
            changed.push_back(reached_);
    }
    inRound_ = entry != folders_.end();
    return changed;
}

}  // namespace watcher
