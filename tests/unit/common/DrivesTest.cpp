#include <array>
#include <atomic>
#include <thread>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <libudev.h>
#include <sys/sysmacros.h>

#include "common/drives/Drives.h"
#include "common/drives/linux/LinuxMounts.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RootMount.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempFolder.h"

// Found before the functions of libudev, which they call, and count who uses it.
namespace {
std::atomic<int> udevUsers{0};
std::atomic<int> udevOverlaps{0};
}  // namespace

udev* udev_new() {
    if (++udevUsers > 1) ++udevOverlaps;
    std::this_thread::yield();
    return reinterpret_cast<udev* (*)()>(dlsym(RTLD_NEXT, "udev_new"))();
}
udev* udev_unref(udev* context) {
    --udevUsers;
    return reinterpret_cast<udev* (*)(udev*)>(dlsym(RTLD_NEXT, "udev_unref"))(context);
}

namespace KXP {
namespace {

namespace fs = std::filesystem;

// A sysfs as the kernel lays it out, with the devices that a test plugs in.
class DrivesTest : public testing::Test {
  protected:
    // A block device in a folder below devices/, with an attribute.
    void Device(const std::string& number, const std::string& folder, const std::string& attribute) {
        const std::string whole = "sys/devices/" + folder;
        files_.Write(whole + "/dev", number + "\n");
        Link("sys/dev/block/" + number, whole);
        Link("sys/class/block/" + fs::path(folder).filename().string(), whole);
        Attribute(folder + "/" + attribute);
    }
    void Disk(const std::string& number, const std::string& folder) { Device(number, folder, "removable=0"); }
    void Attribute(const std::string& attribute) {
        const size_t at = attribute.find('=');
        files_.Write("sys/devices/" + attribute.substr(0, at), attribute.substr(at + 1) + "\n");
    }
    void Bus(const std::string& folder, const std::string& bus) {
        files_.MakeFolder("sys/bus/" + bus);
        Link("sys/devices/" + folder + "/subsystem", "sys/bus/" + bus);
    }
    void Slave(const std::string& folder, const std::string& of) {
        Link("sys/devices/" + folder + "/slaves/" + fs::path(of).filename().string(), "sys/devices/" + of);
    }
    void Link(const std::string& link, const std::string& to) {
        fs::create_directories(fs::path(files_ / link).parent_path());
        fs::create_symlink(files_ / to, files_ / link);
    }

    std::map<std::string, std::string> Drives(const std::string& table) {
        const BlockDisks disks(files_ / "sys", [this](dev_t device, const char* name) {
            return properties_[std::to_string(minor(device)) + name];
        });
        std::vector<Mount> mounts;
        EXPECT_TRUE(ListMounts(files_.Write("mountinfo", table), folders_, disks, mounts));
        std::map<std::string, std::string> drives;
        AddDrives(mounts, drives);
        return drives;
    }

    const TempFolder files_;
    const LogCapture log_;
    std::map<std::string, std::string> properties_;
    std::vector<std::string> folders_;
};

TEST_F(DrivesTest, FindsTheDisksUnderVolumes) {
    const std::string pci = "pci0000:00/0000:00:17.0";
    Bus(pci, "pci");
    Attribute(pci + "/removable=fixed");
    Disk("8:0", pci + "/ata1/block/sda");
    Device("8:1", pci + "/ata1/block/sda/sda1", "partition=1");
    Device("8:2", pci + "/ata1/block/sda/sda2", "partition=1");
    const std::string usb = "pci0000:00/0000:00:14.0/usb1/1-1";
    Bus(usb, "usb");
    Disk("8:16", usb + "/host6/block/sdb");
    Device("8:17", usb + "/host6/block/sdb/sdb1", "partition=1");
    Device("8:32", usb + "/host7/block/sdc", "removable=1");
    Device("8:33", usb + "/host7/block/sdc/sdc1", "partition=1");
    Disk("8:64", "platform/host9/block/sde");
    properties_["64ID_BUS"] = "usb";
    for (const std::string type : {"MMC", "SD"}) {
        Bus("platform/" + type, "mmc");
        Attribute(std::string("platform/").append(type).append("/type=").append(type));
    }
    Disk("179:0", "platform/MMC/block/mmcblk0");
    Disk("179:8", "platform/SD/block/mmcblk1");
    const std::string tunnel = "pci0000:00/0000:00:07.0/0000:04:00.0";
    Bus(tunnel, "pci");
    Attribute(tunnel + "/removable=removable");
    Disk("259:0", tunnel + "/nvme/nvme0/nvme0n1");
    // Encryption over a volume group over a partition inside and another outside.
    for (const std::string name : {"0", "1", "2"})
        Disk("253:" + name, "virtual/block/dm-" + name);
    Slave("virtual/block/dm-0", pci + "/ata1/block/sda/sda2");
    Slave("virtual/block/dm-1", "virtual/block/dm-0");
    Slave("virtual/block/dm-1", usb + "/host6/block/sdb/sdb1");
    Slave("virtual/block/dm-2", usb + "/host7/block/sdc");
    Slave("virtual/block/dm-2", "virtual/block/dm-2");
    properties_["1UDISKS_IGNORE"] = "1";

    const std::array<std::string, 3> rows[] = {
        {"8:2", "/dev/sda2", "fixed"},         {"8:1", "/dev/sda1", "reserved"},
        {"8:17", "/dev/sdb1", "external"},     {"8:33", "/dev/sdc1", "removable"},
        {"0:41", "/dev/sda2", "fixed"},        {"8:64", "/dev/sde", "external"},
        {"179:0", "/dev/mmcblk0", "fixed"},    {"179:8", "/dev/mmcblk1", "external"},
        {"259:0", "/dev/nvme0n1", "external"}, {"253:0", "/dev/mapper/a", "fixed"},
        {"0:40", "/dev/dm-1", "reserved"},     {"253:2", "/dev/mapper/c", "removable"},
        {"0:43", "pool/data", "reserved"},     {"0:42", "/dev/nowhere", "reserved"},
        {"0:44", "/dev/../tmp", "reserved"},   {"8:99", "/dev/sda2", "reserved"},
    };
    const auto kindOf = [&](const std::string& device, const std::string& source) {
        return Drives("30 1 " + device + " / /m rw - btrfs " + source + " rw\n").at("/m");
    };
    for (const auto& [device, source, word] : rows)
        EXPECT_EQ(kindOf(device, source), word) << source;
    properties_.clear();
    EXPECT_EQ(Drives("30 1 0:40 / /m rw - btrfs /dev/dm-1 rw\n").at("/m"), "external") << "one disk is";
}

TEST_F(DrivesTest, ReadsTheTableOfMounts) {
    Disk("8:0", "block/sda");
    const ScopedEnv options("LIBMOUNT_UTAB",
                            files_.Write("utab", "SRC=/dev/sda TARGET=/secret ROOT=/ OPTS=x-gvfs-hide\n"));
    const auto drives = Drives(
        "20 1 8:0 / / rw,relatime shared:1 - ext4 /dev/sda rw\n"
        "21 20 8:0 / / ro - ext4 /dev/sda rw\n"
        "22 20 8:0 / /my\\040disk\\134 rw - ext4 /dev/sda rw\n"
        "23 20 8:0 / /sealed rw - ext4 /dev/sda ro\n"
        "24 20 8:0 / /bad\xFF rw - ext4 /dev/sda rw\n"
        "25 20 0:30 / /nas rw - nfs4 server:/export rw\n"
        "26 20 0:31 / /tmp rw - tmpfs tmpfs rw\n"
        "27 20 0:32 / /auto rw - autofs systemd-1 rw\n"
        "28 20 0:33 / /home rw - autofs systemd-1 rw\n"
        "29 28 8:0 / /home rw - ext4 /dev/sda rw\n"
        "this is no line\n"
        "31 20 8:0 / /secret rw - ext4 /dev/sda rw\n");
    const std::map<std::string, std::string> expected = {
        {"/", "fixed"},       {"/my disk\\", "fixed"}, {"/sealed", "reserved"}, {"/nas", "network"},
        {"/tmp", "reserved"}, {"/auto", "reserved"},   {"/home", "fixed"},      {"/secret", "reserved"}};
    EXPECT_EQ(drives, expected);
    EXPECT_TRUE(log_.HasLine(1, "Passed over 1 mount points that are not UTF-8"));
    std::vector<Mount> mounts;
    EXPECT_FALSE(ListMounts(files_ / "missing", {}, BlockDisks("/nowhere", &UdevProperty), mounts));
}

TEST_F(DrivesTest, VolumesWithoutADiskCountWhereTheUsersFoldersAre) {
    if (!ShowsRootMount()) GTEST_SKIP() << "no mount of / is to be seen";
    folders_ = {files_.path()};
    std::vector<MountEntry> entries;
    ASSERT_TRUE(ReadMountTable("/proc/self/mountinfo", entries));
    const MountEntry* const here = MountOfPath(entries, files_.path());
    ASSERT_NE(here, nullptr);
    EXPECT_TRUE(IsVolumeLocal("/proc/self"));
    EXPECT_FALSE(IsVolumeLocal(files_ / "missing"));
    const std::pair<const char*, const char*> rows[] = {
        {"zfs rpool/home", "fixed"},   {"virtiofs host", "fixed"},  {"fuse /dev/fuse", "fixed"},
        {"fuse.encfs encfs", "fixed"}, {"tmpfs tmpfs", "reserved"}, {"nfs4 server:/home", "network"}};
    for (const auto& [volume, word] : rows) {
        std::string table;
        for (const char* place : {"/here", "/there"})
            table.append(std::to_string(table.empty() ? here->id : 9999999))
                .append(" 1 0:50 / ")
                .append(place)
                .append(" rw - ")
                .append(volume)
                .append(" rw\n");
        const auto drives = Drives(table);
        EXPECT_EQ(drives.at("/here"), word) << volume;
        EXPECT_NE(drives.at("/there"), "fixed") << volume;
    }
}

TEST_F(DrivesTest, OneThreadAtATimeUsesLibudev) {
    const auto ask = [] {
        for (int i = 0; i < 500; ++i)
            UdevProperty(makedev(1, 3), "ID_BUS");
    };
    std::thread other(ask);
    ask();
    other.join();
    EXPECT_EQ(udevOverlaps, 0);
}

TEST_F(DrivesTest, SpaceIsInWholeDecimalMegabytes) {
    EXPECT_EQ(WholeMegabytes(999999, 1), 0u);
    EXPECT_EQ(WholeMegabytes(4882813, 4096), 20000u);
    EXPECT_EQ(WholeMegabytes(uint64_t{4294967296} * 1000, 1000), UINT32_MAX);
    EXPECT_EQ(WholeMegabytes(UINT64_MAX, 4096), UINT32_MAX);
    uint32_t freeMB = 1;
    uint32_t totalMB = 1;
    EXPECT_FALSE(GetDriveSpace(files_ / "missing", freeMB, totalMB));
    EXPECT_EQ(freeMB, 0u);
    EXPECT_EQ(totalMB, 0x7FFFFFFFu);
    EXPECT_TRUE(GetDriveSpace(files_.path(), freeMB, totalMB));
    EXPECT_LE(freeMB, totalMB);
    EXPECT_NE(totalMB, 0x7FFFFFFFu);
}

}  // namespace
}  // namespace KXP
