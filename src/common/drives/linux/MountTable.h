// The kernel's table of mounts with the options that only user space keeps, by libmount. Reading it asks no
// file system, so that neither a dead server nor an automounter is touched.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <sys/types.h>

namespace KXP {

struct MountEntry {
    int id = 0;
    int parent = 0;
    dev_t device = 0;  // major number 0 where the file system has no block device, or more than one
    std::string source;
    std::string type;
    std::string target;  // any bytes
    uint32_t flags = 0;  // those of mount(2)
    bool pseudo = false;
    bool network = false;
    bool hidden = false;  // by an option for file managers
};

// In the kernel's order. A line that cannot be read is left out; false when the table cannot be read.
bool ReadMountTable(const std::string& file, std::vector<MountEntry>& entries);

// The entry of the mount that holds the path, or null.
const MountEntry* MountOfPath(const std::vector<MountEntry>& entries, const std::string& path);

}  // namespace KXP
