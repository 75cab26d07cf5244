#include "common/drives/Drives.h"

#include <algorithm>

#include "CobalixUtil.h"
#include "common/results/RetVal.h"

namespace KXP {
namespace {

const char* TrueOrFalse(bool value) {
    return value ? "true" : "false";
}

}  // namespace

int EnumDrives(const std::vector<std::string>& folders, std::map<std::string, std::string>& drives) {
    drives.clear();
    std::vector<Mount> mounts;
    if (!Platform::ListMounts(folders, mounts)) {
        KXP_LOG(LogFailure, "Unable to get mount info");
        return Code::kFailure;
    }
    AddDrives(mounts, drives);
    return Code::kOk;
}

void AddDrives(const std::vector<Mount>& mounts, std::map<std::string, std::string>& drives) {
    for (const Mount& mount : mounts) {
        KXP_LOG(LogTrace,
                "Disk type:'%s' flags:0x%08x:rdonly:%s, local:%s, dontbrowse:%s, volumeremovable:%s "
                "NSLocal:%s path:'%s'\n",
                mount.type.c_str(), mount.flags, TrueOrFalse(mount.readOnly), TrueOrFalse(mount.localFlag),
                TrueOrFalse(mount.hidden), TrueOrFalse(mount.removable), TrueOrFalse(mount.local),
                mount.path.c_str());
        drives.emplace(mount.path, DriveWord(mount));
    }
}

const char* DriveWord(const Mount& mount) {
    if (mount.readOnly || mount.hidden) return "reserved";
    if (!mount.local || !mount.localFlag) return "network";
    if (mount.removable) return "removable";
    bool internal = false;
    if (mount.internalDisk(internal) != Code::kOk) {
        // It is skipped as a place for the gallery, not as a drive.
        KXP_LOG(LogFailure, "Unable to determine location, skipping");
        return "reserved";
    }
    return internal ? "fixed" : "external";
}

bool GetDriveSpace(const std::string& path, uint32_t& freeMB, uint32_t& totalMB) {
    freeMB = 0;
    totalMB = 0x7FFFFFFF;
    Platform::VolumeBlocks blocks;
    if (!Platform::CountBlocks(path, blocks)) return false;
    freeMB = WholeMegabytes(blocks.available, blocks.size);
    totalMB = WholeMegabytes(blocks.all, blocks.size);
    return true;
}

uint32_t WholeMegabytes(uint64_t blocks, uint64_t blockSize) {
    uint64_t bytes = 0;
    if (__builtin_mul_overflow(blocks, blockSize, &bytes)) return UINT32_MAX;
    return static_cast<uint32_t>(std::min<uint64_t>(bytes / 1000000, UINT32_MAX));
}

}  // namespace KXP
