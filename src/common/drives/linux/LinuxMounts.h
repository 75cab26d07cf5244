// The mounts of a Linux machine, from a table of mounts and a description of its devices.
#pragma once

#include <string>
#include <vector>

#include "common/drives/Drives.h"
#include "common/drives/linux/BlockDisks.h"
#include "common/drives/linux/MountTable.h"

namespace KXP {

// The mount by its entry and its disk. `isUsed` says that it holds a folder of the user's.
Mount DescribeMount(const MountEntry& entry, const BlockDisks& disks, bool isUsed);

// All of them. Those whose mount points are not UTF-8 are passed over, which is logged once; so are
// automounters that have mounted their volume. False when the table cannot be read.
bool ListMounts(const std::string& table, const std::vector<std::string>& folders, const BlockDisks& disks,
                std::vector<Mount>& mounts);

}  // namespace KXP
