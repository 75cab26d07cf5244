// The table of mounts: whoever mounts something names its source, place and type.
#include <map>
#include <set>
#include <string>

#include "common/drives/linux/LinuxMounts.h"
#include "common/text/TextUtil.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Plain.h"
#include "fuzz/QuietLog.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    static MemoryFile table;
    static const std::set<std::string> words = {"reserved", "network", "removable", "external", "fixed"};
    table.Set(data, size);
    const KXP::BlockDisks disks("/sys", [](dev_t, const char*) { return std::string(); });
    std::vector<KXP::MountEntry> entries;
    std::vector<KXP::Mount> mounts;
    const bool isRead = KXP::ListMounts(table.path(), {"/"}, disks, mounts);
    plain::Demand(isRead == KXP::ReadMountTable(table.path(), entries) && mounts.size() <= entries.size());
    std::map<std::string, std::string> drives;
    KXP::AddDrives(mounts, drives);
    for (const KXP::Mount& mount : mounts)
        plain::Demand(KXP::IsValidUtf8(mount.path) && drives.count(mount.path) == 1);
    for (const auto& [path, word] : drives)
        plain::Demand(words.count(word) == 1);
    return 0;
}
