#include "common/drives/linux/MountTable.h"

#include <algorithm>
#include <memory>

#include <fcntl.h>
#include <libmount/libmount.h>
#include <sys/stat.h>

namespace KXP {
namespace {

struct Free {
    void operator()(libmnt_table* table) const { mnt_unref_table(table); }
    void operator()(libmnt_iter* iterator) const { mnt_free_iter(iterator); }
};

std::string Text(const char* text) {
    return text ? text : "";
}

MountEntry EntryOf(libmnt_fs* fs) {
    MountEntry entry;
    entry.id = mnt_fs_get_id(fs);
    entry.parent = mnt_fs_get_parent_id(fs);
    entry.device = mnt_fs_get_devno(fs);
    entry.source = Text(mnt_fs_get_source(fs));
    entry.type = Text(mnt_fs_get_fstype(fs));
    entry.target = Text(mnt_fs_get_target(fs));
    unsigned long flags = 0;
    mnt_optstr_get_flags(mnt_fs_get_options(fs), &flags, mnt_get_builtin_optmap(MNT_LINUX_MAP));
    entry.flags = static_cast<uint32_t>(flags);
    entry.pseudo = mnt_fs_is_pseudofs(fs) == 1;
    entry.network = mnt_fs_is_netfs(fs) == 1;
    for (const char* option : {"x-gvfs-hide", "x-udisks-hide"})
        entry.hidden = entry.hidden || mnt_fs_get_option(fs, option, nullptr, nullptr) == 0;
    return entry;
}

}  // namespace

bool ReadMountTable(const std::string& file, std::vector<MountEntry>& entries) {
    const std::unique_ptr<libmnt_table, Free> table(mnt_new_table());
    const std::unique_ptr<libmnt_iter, Free> iterator(mnt_new_iter(MNT_ITER_FORWARD));
    if (!table || !iterator || mnt_table_parse_mtab(table.get(), file.c_str()) != 0) return false;
    libmnt_fs* fs = nullptr;
    while (mnt_table_next_fs(table.get(), iterator.get(), &fs) == 0)
        entries.push_back(EntryOf(fs));
    return true;
}

const MountEntry* MountOfPath(const std::vector<MountEntry>& entries, const std::string& path) {
    struct statx status {};
    // The identity, not the device: files on btrfs report devices that are in no table.
    if (statx(AT_FDCWD, path.c_str(), AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC, STATX_MNT_ID, &status) != 0 ||
        !(status.stx_mask & STATX_MNT_ID))
        return nullptr;
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const MountEntry& entry) {
        return static_cast<uint64_t>(entry.id) == status.stx_mnt_id;
    });
    return found == entries.end() ? nullptr : &*found;
}

}  // namespace KXP
