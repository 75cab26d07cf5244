#include "plugin-modules/Gallery/src/watcher/linux/FolderPoll.h"

#include <algorithm>
#include <iterator>

#include <sys/vfs.h>

#include "plugin-modules/Gallery/src/watcher/linux/PathRange.h"

namespace watcher {
namespace {

// Some volumes know times by two seconds.
constexpr int64_t kCoarsestTimeNs = 2000000000;

// Of linux/magic.h, and of file systems whose magic number is in no header: NFS, SMB 1 to 3, AFS, Ceph, Coda,
// 9P; and FUSE, which does not tell the network's from the others.
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

void FolderPoll::RemoveWithBeneath(const std::string& folder) {
    EraseWithBeneath(folders_, folder);
}

void FolderPoll::StartRound() {
    reached_.clear();
    inRound_ = true;
}

std::vector<std::string> FolderPoll::Step(size_t count) {
    std::vector<std::string> changed;
    auto entry = folders_.upper_bound(reached_);
    for (; entry != folders_.end() && count > 0; ++entry, --count) {
        reached_ = entry->first;
        const Item item = LookAt(reached_, true);
        if (item.kind != ItemKind::Folder) continue;  // its parent tells that
        const Stamp& before = entry->second;
        if (item.stamp.inode != before.inode || item.stamp.modifiedNs != before.modifiedNs)
            changed.push_back(reached_);
    }
    inRound_ = entry != folders_.end();
    return changed;
}

}  // namespace watcher
