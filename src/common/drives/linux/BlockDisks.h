// The whole disks beneath a volume and where they are: by the links of sysfs, and by udev's database for what
// its rules add.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace KXP {

struct VolumeDisk {
    bool removable = false;  // the medium
    bool outside = false;    // on a bus that disks are plugged into while the machine runs
    bool ignored = false;    // the machine's rules keep the volume from its users
};

class BlockDisks {
  public:
    // Asks udev's database for a property of a block device; empty when there is none.
    using Property = std::function<std::string(dev_t device, const char* name)>;

    BlockDisks(const std::string& sysfs, Property property);

    // The disk of a mounted volume, by its device or, where that is none, by its source. Where several disks
    // make up a volume it is removable or outside if any of them is. No value without a known block device.
    std::optional<VolumeDisk> Find(dev_t device, const std::string& source) const;

  private:
    std::filesystem::path FolderOf(dev_t device, const std::string& source) const;
    bool IsOutside(const std::filesystem::path& disk) const;
    std::string PropertyOf(const std::filesystem::path& device, const char* name) const;

    const std::filesystem::path sysfs_;
    const Property property_;
};

// From the machine's own database.
std::string UdevProperty(dev_t device, const char* name);

}  // namespace KXP
