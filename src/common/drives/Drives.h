// Which volumes there are and of what kind, and how much room they have. Nothing here holds state or throws.
// Any thread may call; threads that ask at the same time wait for each other where a system library needs it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace KXP {

// Fills `drives` with a word for each mount point: "reserved" (read-only, hidden or of unknown place),
// "network", "removable", "external" or "fixed". Volumes without a disk that the system can name, such as
// those of a pool or of a virtual machine's host, are "fixed" if they hold one of the folders, else
// "reserved". 0, or 0x80004005 and no drives when the system has no answer.
int EnumDrives(const std::vector<std::string>& folders, std::map<std::string, std::string>& drives);

// Free space for an unprivileged user and the whole size, in units of 1,000,000 bytes, rounded down; what is
// beyond 32 bits becomes the largest number. When false, 0 free of 0x7FFFFFFF.
bool GetDriveSpace(const std::string& path, uint32_t& freeMB, uint32_t& totalMB);

// About the volume that holds the path; also false when that is unknown.
bool IsVolumeRemovable(const std::string& path);
bool IsVolumeLocal(const std::string& path);

// Whether the path's disk is inside the machine. 0x80004005 when its volume has no known disk.
int InternalDiskForPath(const std::string& path, bool& internal);

// One mount, as the platform describes it.
struct Mount {
    std::string type;
    std::string path;    // UTF-8
    uint32_t flags = 0;  // the system's own, for the log
    bool readOnly = false;
    bool hidden = false;     // from browsing
    bool localFlag = false;  // by the table of mounts; `local` is by the volume
    bool local = false;
    bool removable = false;
    // InternalDiskForPath for this mount, asked only where the answer decides.
    std::function<int(bool& internal)> internalDisk;
};

// The word for a mount.
const char* DriveWord(const Mount& mount);

// Adds each mount with its word; of two at one place the first counts.
void AddDrives(const std::vector<Mount>& mounts, std::map<std::string, std::string>& drives);

uint32_t WholeMegabytes(uint64_t blocks, uint64_t blockSize);

namespace Platform {

// False when the system has no answer. For `folders` see EnumDrives.
bool ListMounts(const std::vector<std::string>& folders, std::vector<Mount>& mounts);

struct VolumeBlocks {
    uint64_t size = 0;       // of one, in bytes
    uint64_t available = 0;  // to an unprivileged user
    uint64_t all = 0;
};

bool CountBlocks(const std::string& path, VolumeBlocks& blocks);

}  // namespace Platform
}  // namespace KXP
