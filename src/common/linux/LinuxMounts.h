// The mounts of a Linux machine, from a table of mounts and a description of its devices.
#pragma once

#include <string>
#include <vector>

#include "common/Drives.h"
#include "common/linux/BlockDisks.h"
#include "common/linux/MountTable.h"

namespace KXP {

// What the entry and its disk tell together.
Mount DescribeMount(const MountEntry& entry, const BlockDisks& disks);

// All of them. Those whose mount points are not UTF-8 are passed over, which is logged once; so are
// automounters that have done their work. False when the table cannot be read.
bool ListMounts(const std::string& table, const BlockDisks& disks, std::vector<Mount>& mounts);

}  // namespace KXP
