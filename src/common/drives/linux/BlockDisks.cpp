#include "common/drives/linux/BlockDisks.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string_view>
#include <utility>

#include <libudev.h>
#include <sys/sysmacros.h>

#include "base/ReadWrite.h"
#include "common/threads/Mutex.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;

// More than any real stack of mappers, arrays and disks.
constexpr size_t kMaxDevices = 256;

constexpr std::string_view kNodes = "/dev/";

bool IsNode(const std::string& path) {
    return path.size() > kNodes.size() && path.compare(0, kNodes.size(), kNodes) == 0;
}

// Empty when the path leads nowhere.
fs::path Resolved(const fs::path& path) {
    std::error_code error;
    const fs::path resolved = fs::canonical(path, error);
    return error ? fs::path() : resolved;
}

bool Exists(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

// Held while libudev is used: it has state that its contexts share.
Mutex g_udevMutex;

// An attribute's first line.
std::string Attribute(const fs::path& file) {
    char text[64];
    const FileDescriptor attribute = OpenForRead(file.string());
    const long length = attribute.IsOpen() ? ReadSome(attribute, text, sizeof text) : 0;
    if (length <= 0) return "";
    const std::string whole(text, static_cast<size_t>(length));
    return whole.substr(0, whole.find('\n'));
}

// What a mapped device or an array is made of.
std::vector<fs::path> Slaves(const fs::path& device) {
    std::vector<fs::path> slaves;
    std::error_code error;
    for (fs::directory_iterator entry(device / "slaves", error), end; !error && entry != end;
         entry.increment(error))
        slaves.push_back(Resolved(entry->path()));
    return slaves;
}

// The whole disks under a device, itself if it is one.
std::vector<fs::path> WholeDisks(const fs::path& device) {
    std::vector<fs::path> seen = {device};
    std::vector<fs::path> disks;
    const auto add = [&](const fs::path& next) {
        if (!next.empty() && std::find(seen.begin(), seen.end(), next) == seen.end()) seen.push_back(next);
    };
    for (size_t i = 0; i < seen.size() && i < kMaxDevices; ++i) {
        const fs::path current = seen[i];
        const std::vector<fs::path> slaves = Slaves(current);
        if (Exists(current / "partition")) {
            add(current.parent_path());
        } else if (slaves.empty()) {
            disks.push_back(current);
        }
        for (const fs::path& slave : slaves)
            add(slave);
    }
    return disks;
}

// Whether this device on the way from the root to a disk makes the disk one that is plugged in.
bool IsPlug(const fs::path& device) {
    const std::string bus = Resolved(device / "subsystem").filename().string();
    if (bus == "usb" || bus == "firewire" || bus == "thunderbolt") return true;
    // The bus of SD cards is also that of memory soldered to the board, which says "MMC".
    if (bus == "mmc") return Attribute(device / "type") != "MMC";
    // Devices behind Thunderbolt appear on PCI, and the port that they are plugged into is marked.
    return bus == "pci" && Attribute(device / "removable") == "removable";
}

}  // namespace

BlockDisks::BlockDisks(const std::string& sysfs, Property property)
    : sysfs_(Resolved(sysfs)), property_(std::move(property)) {}

std::optional<VolumeDisk> BlockDisks::Find(dev_t device, const std::string& source) const {
    const fs::path volume = FolderOf(device, source);
    if (volume.empty()) return std::nullopt;
    VolumeDisk found;
    found.ignored = PropertyOf(volume, "UDISKS_IGNORE") == "1";
    for (const fs::path& disk : WholeDisks(volume)) {
        found.removable = found.removable || Attribute(disk / "removable") == "1";
        found.outside = found.outside || IsOutside(disk);
    }
    return found;
}

// File systems of several devices, btrfs among them, show an anonymous device, and their
// source names the first of their own. A source may be any text of whoever mounted it, and must not lead out
// of /dev, for example to a dead server.
fs::path BlockDisks::FolderOf(dev_t device, const std::string& source) const {
    if (sysfs_.empty()) return {};
    if (major(device) != 0)
        return Resolved(sysfs_ / "dev/block" /
                        (std::to_string(major(device)) + ":" + std::to_string(minor(device))));
    if (!IsNode(source) || fs::path(source).lexically_normal() != source) return {};
    const fs::path node = Resolved(source);
    // The kernel's names have "!" where those of nodes have "/".
    std::string name = (IsNode(node.string()) ? node.string() : source).substr(kNodes.size());
    std::replace(name.begin(), name.end(), '/', '!');
    return Resolved(sysfs_ / "class/block" / name);
}

bool BlockDisks::IsOutside(const fs::path& disk) const {
    const std::string bus = PropertyOf(disk, "ID_BUS");
    if (bus == "usb" || bus == "ieee1394") return true;
    for (fs::path device = disk; device != sysfs_ && device.has_relative_path();
         device = device.parent_path())
        if (IsPlug(device)) return true;
    return false;
}

std::string BlockDisks::PropertyOf(const fs::path& device, const char* name) const {
    unsigned majorNumber = 0;
    unsigned minorNumber = 0;
    if (sscanf(Attribute(device / "dev").c_str(), "%u:%u", &majorNumber, &minorNumber) != 2) return "";
    return property_(makedev(majorNumber, minorNumber), name);
}

std::string UdevProperty(dev_t device, const char* name) {
    const MutexLock lock(g_udevMutex);
    const std::unique_ptr<udev, decltype(&udev_unref)> context(udev_new(), &udev_unref);
    if (!context) return "";
    const std::unique_ptr<udev_device, decltype(&udev_device_unref)> found(
        udev_device_new_from_devnum(context.get(), 'b', device), &udev_device_unref);
    const char* value = found ? udev_device_get_property_value(found.get(), name) : nullptr;
    return value ? value : "";
}

}  // namespace KXP
