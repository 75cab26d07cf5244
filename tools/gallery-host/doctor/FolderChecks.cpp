#include "gallery-host/doctor/FolderChecks.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <system_error>

#include <unistd.h>

#include "common/drives/Drives.h"
#include "gallery-host/doctor/WatchLimit.h"
#include "gallery-host/output/Words.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kScarceMB = 1000;
constexpr uint32_t kTooLittleMB = 100;
// Nothing was captured before.
constexpr std::time_t kEarliestClock = 1735689600;  // 2025-01-01

// The type of the file system that holds the path.
std::string FileSystemOf(const std::string& path) {
    std::vector<KXP::Mount> mounts;
    KXP::Platform::ListMounts({path}, mounts);
    const KXP::Mount* found = nullptr;
    for (const KXP::Mount& mount : mounts) {
        const std::string start = mount.path == "/" ? "/" : mount.path + "/";
        const bool holds = (path + "/").compare(0, start.size(), start) == 0;
        if (holds && (!found || found->path.size() <= mount.path.size())) found = &mount;
    }
    return found ? found->type + (found->readOnly ? ", read-only" : "") : "a file system of unknown type";
}

Finding CheckFolder(const std::string& check, const std::string& path, const std::string& ifMissing) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found) {
        const bool isMade = ifMissing.empty();
        return {check,
                isMade ? Health::kGood : Health::kBad,
                path + (isMade ? " is made when it is needed" : ": it is missing"),
                ifMissing,
                {}};
    }
    if (status.type() != fs::file_type::directory)
        return {check,
                Health::kBad,
                path + ": " + (error ? error.message() : "it is no folder"),
                "give it back its folder, or choose another with \"settings set\"",
                {}};
    if (access(path.c_str(), R_OK | W_OK | X_OK) != 0)
        return {check,
                Health::kBad,
                path + ": " + std::strerror(errno),
                "give yourself the right to read and write there",
                {}};
    return {check, Health::kGood, path + " on " + FileSystemOf(path), {}, {}};
}

Finding CheckRoom(const std::string& path) {
    uint32_t free = 0;
    uint32_t total = 0;
    if (!KXP::GetDriveSpace(path, free, total))
        return {"room", Health::kNote, path + ": the system does not say how much is free", {}, {}};
    const std::string text = HumanSize(free * 1000.0) + " of " + HumanVolume(total) + " are free";
    if (free >= kScarceMB) return {"room", Health::kGood, text, {}, {}};
    return {"room",
            free < kTooLittleMB ? Health::kBad : Health::kNote,
            text,
            "make room; \"clean --to\" helps, once the trash is emptied",
            {}};
}

size_t CountFolders(const std::string& path) {
    size_t count = 1;
    std::error_code error;
    constexpr auto kPass = fs::directory_options::skip_permission_denied;
    for (auto entry = fs::recursive_directory_iterator(path, kPass, error);
         !error && entry != fs::recursive_directory_iterator(); entry.increment(error))
        if (entry->is_directory(error) && !entry->is_symlink(error)) ++count;
    return count;
}

// The watcher needs one watch for each folder.
Finding CheckWatches(const std::string& gallery) {
    const size_t needed = CountFolders(gallery);
    const size_t limit = Platform::WatchLimit();
    if (limit == 0) return {"watches", Health::kGood, "the system names no limit", {}, {}};
    const std::string text = Counted(needed, "folder") + " to watch of " + std::to_string(limit);
    if (needed <= limit / 2) return {"watches", Health::kGood, text, {}, {}};
    return {"watches",
            needed > limit ? Health::kBad : Health::kNote,
            text,
            "raise fs.inotify.max_user_watches with sysctl; changes are noticed late until then",
            {}};
}

Finding CheckClock() {
    if (std::time(nullptr) >= kEarliestClock)
        return {"clock", Health::kGood, "the date is plausible", {}, {}};
    return {"clock", Health::kBad, "the date is before 2025", "set the clock; captures get wrong dates", {}};
}

}  // namespace

Findings CheckFolders(const ProductFolders& folders) {
    Findings findings;
    findings.push_back(CheckFolder(
        "gallery", folders.gallery,
        folders.isDefaultGallery ? "" : "connect its drive, or choose another with \"settings set --path\""));
    findings.push_back(CheckFolder("temporary", folders.temporary, ""));
    findings.push_back(CheckFolder("share", folders.share, ""));
    findings.push_back(CheckFolder("cache", folders.cache, ""));
    if (fs::is_directory(folders.gallery)) {
        findings.push_back(CheckRoom(folders.gallery));
        findings.push_back(CheckWatches(folders.gallery));
    }
    findings.push_back(CheckClock());
    return findings;
}

}  // namespace host
