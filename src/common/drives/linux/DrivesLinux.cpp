#include <algorithm>
#include <optional>

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
    return DescribeMount(*entry, MachineDisks());
}

// An automounter stays in the table beneath what it has mounted; as the first entry at that place it would
// decide the word.
bool IsCoveredAutomounter(const MountEntry& entry, const std::vector<MountEntry>& entries) {
    return entry.type == "autofs" &&
           std::any_of(entries.begin(), entries.end(), [&](const MountEntry& other) {
               return other.parent == entry.id && other.target == entry.target;
           });
}

}  // namespace

Mount DescribeMount(const MountEntry& entry, const BlockDisks& disks) {
    // A pseudo file system or a server has no disk of this machine.
    const std::optional<VolumeDisk> disk =
        entry.pseudo || entry.network ? std::nullopt : disks.Find(entry.device, entry.source);
    Mount mount;
    mount.type = entry.type;
    mount.path = entry.target;
    mount.flags = entry.flags;
    mount.readOnly = (entry.flags & MS_RDONLY) != 0;
    mount.hidden = entry.hidden || entry.pseudo || (disk && disk->ignored);
    mount.local = mount.localFlag = !entry.network;
    mount.removable = disk && disk->removable;
    mount.internalDisk = [disk](bool& internal) -> int {
        if (!disk) return Code::kFailure;
        internal = !disk->outside;
        return Code::kOk;
    };
    return mount;
}

bool ListMounts(const std::string& table, const BlockDisks& disks, std::vector<Mount>& mounts) {
    std::vector<MountEntry> entries;
    if (!ReadMountTable(table, entries)) return false;
    int illegible = 0;
    for (const MountEntry& entry : entries) {
        if (!IsValidUtf8(entry.target)) {
            ++illegible;
        } else if (!IsCoveredAutomounter(entry, entries)) {
            mounts.push_back(DescribeMount(entry, disks));
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

bool ListMounts(std::vector<Mount>& mounts) {
    return KXP::ListMounts(kMountTable, MachineDisks(), mounts);
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
