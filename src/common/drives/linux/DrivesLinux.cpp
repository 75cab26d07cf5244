#include <algorithm>
#include <optional>
#include <set>

#include <sys/mount.h>
#include <sys/vfs.h>

#include "CobalixUtil.h"
#include "common/drives/linux/LinuxMounts.h"
#include "common/results/RetVal.h"
#include "common/text/TextUtil.h"

namespace KXP {
namespace {

constexpr const char* kMountTable = "/proc/self/mountinfo";

BlockDisks MachineDisks() {
    return {"/sys", &UdevProperty};
}

std::optional<Mount> MountAt(const std::string& path) {
    std::vector<MountEntry> entries;
    const MountEntry* entry = ReadMountTable(kMountTable, entries) ? MountOfPath(entries, path) : nullptr;
    if (!entry) return std::nullopt;
    return DescribeMount(*entry, MachineDisks(), false);
}

// An automounter stays in the table beneath what it has mounted; as the first entry at that place it would
// decide the word.
bool IsCoveredAutomounter(const MountEntry& entry, const std::vector<MountEntry>& entries) {
    return entry.type == "autofs" &&
           std::any_of(entries.begin(), entries.end(), [&](const MountEntry& other) {
               return other.parent == entry.id && other.target == entry.target;
           });
}

// Whether volumes of this type hold files without a block device of their own: pools of disks, shares of a
// virtual machine's host, file systems in user space. Some of those are listed among the pseudo file systems.
bool IsDiskless(const std::string& type) {
    return type == "zfs" || type == "virtiofs" || type == "fuse" || type == "fuseblk" ||
           type.compare(0, 5, "fuse.") == 0;
}

}  // namespace

Mount DescribeMount(const MountEntry& entry, const BlockDisks& disks, bool isUsed) {
    // A pseudo file system or a server has no disk of this machine.
    const std::optional<VolumeDisk> disk =
        entry.pseudo || entry.network ? std::nullopt : disks.Find(entry.device, entry.source);
    const bool isFixed = isUsed && !disk && IsDiskless(entry.type);
    Mount mount;
    mount.type = entry.type;
    mount.path = entry.target;
    mount.flags = entry.flags;
    mount.readOnly = (entry.flags & MS_RDONLY) != 0;
    mount.hidden = entry.hidden || (entry.pseudo && !isFixed) || (disk && disk->ignored);
    mount.local = mount.localFlag = !entry.network;
    mount.removable = disk && disk->removable;
    mount.internalDisk = [disk, isFixed](bool& internal) -> int {
        if (!disk && !isFixed) return Code::kFailure;
        internal = isFixed || !disk->outside;
        return Code::kOk;
    };
    return mount;
}

bool ListMounts(const std::string& table, const std::vector<std::string>& folders, const BlockDisks& disks,
                std::vector<Mount>& mounts) {
    std::vector<MountEntry> entries;
    if (!ReadMountTable(table, entries)) return false;
    std::set<const MountEntry*> used;
    for (const std::string& folder : folders)
        used.insert(MountOfPath(entries, folder));
    int illegible = 0;
    for (const MountEntry& entry : entries) {
        if (!IsValidUtf8(entry.target)) {
            ++illegible;
        } else if (!IsCoveredAutomounter(entry, entries)) {
            mounts.push_back(DescribeMount(entry, disks, used.count(&entry) > 0));
        }
    }
    if (illegible > 0) KXP_LOG(LogFailure, "Passed over %d mount points that are not UTF-8", illegible);
    return true;
}

bool IsVolumeRemovable(const std::string& path) {
    const std::optional<Mount> mount = MountAt(path);
    return mount && mount->removable;
}

bool IsVolumeLocal(const std::string& path) {
    const std::optional<Mount> mount = MountAt(path);
    return mount && mount->local;
}

int InternalDiskForPath(const std::string& path, bool& internal) {
    const std::optional<Mount> mount = MountAt(path);
    return mount ? mount->internalDisk(internal) : Code::kFailure;
}

namespace Platform {

bool ListMounts(const std::vector<std::string>& folders, std::vector<Mount>& mounts) {
    return KXP::ListMounts(kMountTable, folders, MachineDisks(), mounts);
}

bool CountBlocks(const std::string& path, VolumeBlocks& blocks) {
    struct statfs status {};
    if (statfs(path.c_str(), &status) != 0) return false;
    // Linux counts in fragments; only old file systems leave their size to the blocks'.
    blocks.size = static_cast<uint64_t>(status.f_frsize > 0 ? status.f_frsize : status.f_bsize);
    blocks.available = status.f_bavail;
    blocks.all = status.f_blocks;
    return true;
}

}  // namespace Platform
}  // namespace KXP
