#import <DiskArbitration/DiskArbitration.h>
#import <Foundation/Foundation.h>
#include <sys/mount.h>
#include <sys/param.h>

#include <cstdlib>
#include <memory>

#include "base/apple/Owned.h"
#include "common/drives/Drives.h"
#include "common/results/RetVal.h"

namespace KXP {
namespace {

// A query that fails leaves nothing, which reads as false.
bool VolumeSays(const std::string& path, NSURLResourceKey key) {
    @autoreleasepool {
        NSString* text = [NSString stringWithUTF8String:path.c_str()];
        if (text.length == 0) return false;
        NSNumber* value = nil;
        [[NSURL fileURLWithPath:text] getResourceValue:&value forKey:key error:nil];
        return static_cast<bool>(value.boolValue);
    }
}

Mount DescribeMount(const struct statfs& entry) {
    Mount mount;
    mount.type = entry.f_fstypename;
    mount.path = entry.f_mntonname;
    mount.flags = entry.f_flags;
    mount.readOnly = (entry.f_flags & MNT_RDONLY) != 0;
    mount.hidden = (entry.f_flags & MNT_DONTBROWSE) != 0;
    mount.localFlag = (entry.f_flags & MNT_LOCAL) != 0;
    mount.removable = IsVolumeRemovable(mount.path);
    mount.local = IsVolumeLocal(mount.path);
    mount.internalDisk = [path = mount.path](bool& internal) { return InternalDiskForPath(path, internal); };
    return mount;
}

}  // namespace

bool IsVolumeRemovable(const std::string& path) {
    return VolumeSays(path, NSURLVolumeIsRemovableKey);
}

bool IsVolumeLocal(const std::string& path) {
    return VolumeSays(path, NSURLVolumeIsLocalKey);
}

int InternalDiskForPath(const std::string& path, bool& internal) {
    const Owned session(DASessionCreate(kCFAllocatorDefault));
    // Without a session nothing is known, and the caller's own value stands.
    if (!session) return Code::kOk;
    struct statfs status {};
    if (statfs(path.c_str(), &status) != 0) return Code::kFailure;
    const Owned disk(DADiskCreateFromBSDName(kCFAllocatorDefault, session.get(), status.f_mntfromname));
    if (!disk) return Code::kFailure;
    const Owned description(DADiskCopyDescription(disk.get()));
    if (!description) return Code::kFailure;
    const auto value = static_cast<CFBooleanRef>(
        CFDictionaryGetValue(description.get(), kDADiskDescriptionDeviceInternalKey));
    if (!value) return Code::kFailure;
    internal = static_cast<bool>(CFBooleanGetValue(value));
    return Code::kOk;
}

namespace Platform {

bool ListMounts(const std::vector<std::string>&, std::vector<Mount>& mounts) {
    struct statfs* entries = nullptr;
    // Not getmntinfo, whose buffer all threads share.
    const int count = getmntinfo_r_np(&entries, MNT_WAIT);
    const std::unique_ptr<struct statfs, decltype(&std::free)> owned(entries, &std::free);
    if (count <= 0) return false;
    for (int i = 0; i < count; ++i)
        mounts.push_back(DescribeMount(entries[i]));
    return true;
}

bool CountBlocks(const std::string& path, VolumeBlocks& blocks) {
    struct statfs status {};
    if (statfs(path.c_str(), &status) != 0) return false;
    blocks.size = status.f_bsize;
    blocks.available = status.f_bavail;
    blocks.all = status.f_blocks;
    return true;
}

}  // namespace Platform
}  // namespace KXP
