#include "common/files/FileUtil.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/NewFile.h"
#include "base/Path.h"
#include "base/ReadWrite.h"
#include "base/SlabMemory.h"
#include "common/files/DirUtil.h"
#include "common/results/RetVal.h"
#include "common/threads/HeldLog.h"

namespace KXP {
namespace {

constexpr size_t kCopyBlock = 1024;
// What a cancelled copy still finishes.
constexpr size_t kCopyStep = size_t{8} << 20;
constexpr size_t kCopyBuffer = size_t{1} << 20;
constexpr mode_t kNewFileMode = 0644;
constexpr mode_t kNormalMode = 0776;

int Failed(const char* text) {
    KXP_LOG(LogFailure, "%s", text);
    return Code::kFailure;
}

void LogMoveFailed(const std::string& source, const std::string& destination) {
    KXP_LOG(LogFailure, "Error 0x%08u moving file %s to %s", static_cast<unsigned>(errno), source.c_str(),
            destination.c_str());
}

bool CopyBytes(const FileDescriptor& source, const FileDescriptor& destination) {
    char block[kCopyBlock];
    size_t offset = 0;
    long got = 0;
    while ((got = ReadSome(source, block, sizeof block)) > 0) {
        if (!WriteFullyAt(destination, block, static_cast<size_t>(got), offset)) return false;
        offset += static_cast<size_t>(got);
    }
    return got == 0;
}

// The next bytes from `position` on, at least one. False when a read or write fails or the file has ended.
bool CopyStep(const FileDescriptor& source, const FileDescriptor& destination, uint64_t& position,
              uint64_t size, SlabVector<char>& buffer) {
    const size_t step = static_cast<size_t>(std::min<uint64_t>(size - position, kCopyStep));
    if (buffer.empty()) {
        const int64_t copied =
            Platform::CopyFileRange(source.get(), position, destination.get(), position, step);
        if (copied > 0) {
            position += static_cast<uint64_t>(copied);
            return true;
        }
        // Whatever stopped it, a full disk included, stops the copy by hand as well.
        buffer.resize(kCopyBuffer);
    }
    const size_t got = ReadAt(source, position, buffer.data(), std::min(step, buffer.size()));
    if (got == 0 || !WriteFullyAt(destination, buffer.data(), got, position)) return false;
    position += got;
    return true;
}

// A volume may refuse an owner or modes altogether, which leaves the copy as good as it can be there. Bits
// that lend the owner's rights go only with that owner.
void CopyOwnerAndMode(const struct stat& from, const FileDescriptor& to) {
    const bool sameOwner = fchown(to.get(), from.st_uid, from.st_gid) == 0;
    const mode_t mode = from.st_mode & static_cast<mode_t>(sameOwner ? 07777 : 0777);
    if (fchmod(to.get(), mode) != 0) KXP_LOG(LogDetail, "FileCopy could not copy the mode: %d", errno);
}

}  // namespace

bool FileExists(const std::string& path) {
    return IsUsablePath(path) && access(path.c_str(), F_OK) == 0 && !DirectoryExists(path);
}

bool IsRegularFile(const std::string& path) {
    struct stat status {};
    return IsUsablePath(path) && lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

int FileCopy(const std::string& source, const std::string& destination) {
    const FileDescriptor from = OpenForRead(source);
    if (!from.IsOpen()) return Failed("FileCopy open source failed");
    FileDescriptor to = OpenForWrite(destination, kNewFileMode);
    if (!to.IsOpen()) return Failed("FileCopy open destination failed");
    if (!CopyBytes(from, to)) return Failed("FileCopy failed to copy the content");
    struct stat status {};
    if (fstat(from.get(), &status) != 0) return Failed("FileCopy fopen source failed");
    CopyOwnerAndMode(status, to);
    return to.Close() ? Code::kOk : Failed("FileCopy failed to copy the content");
}

int FileCopyNew(const std::string& source, const std::string& destination,
                const std::atomic<bool>& cancelled) {
    uint64_t size = 0;
    const FileDescriptor from = OpenForRead(source, &size);
    if (!from.IsOpen()) return Failed("FileCopy open source failed");
    NewFile to(destination);
    if (!to.IsOpen()) return Failed("FileCopy open destination failed");
    SlabVector<char> buffer;
    for (uint64_t position = 0; position < size;) {
        if (cancelled) return Code::kAborted;
        if (!CopyStep(from, to.descriptor(), position, size, buffer))
            return Failed("FileCopy failed to copy the content");
    }
    struct stat status {};
    if (fstat(from.get(), &status) != 0) return Failed("FileCopy fopen source failed");
    CopyOwnerAndMode(status, to.descriptor());
    return to.PutNew() ? Code::kOk : Failed("FileCopy failed to put the copy into its place");
}

int FileMove(const std::string& source, const std::string& destination) {
    if (std::rename(source.c_str(), destination.c_str()) == 0) return Code::kOk;
    LogMoveFailed(source, destination);
    return Code::kFailure;
}

int FileMoveNew(const std::string& source, const std::string& destination) {
    if (Platform::RenameNoReplace(AT_FDCWD, source, AT_FDCWD, destination)) return Code::kOk;
    LogMoveFailed(source, destination);
    return Code::kFailure;
}

int FileMigrate(const std::string& legacyFile, const std::string& newFile) {
    if (legacyFile == newFile) {
        KXP_LOG(LogMilestone,
                "Both legacyFile and newFile are the same, skipping migration, legacy: %s, new: %s",
                legacyFile.c_str(), newFile.c_str());
        return Code::kNothingDone;
    }
    if (!FileExists(legacyFile)) return Code::kOk;
    KXP_LOG(LogMilestone, "Attempting to migrate %s to %s", legacyFile.c_str(), newFile.c_str());
    if (FileExists(newFile)) {
        KXP_LOG(LogFailure,
                "Both legacy and current files exist. Attempting to delete legacy and continuing");
        FileDelete(legacyFile, true);
        return Code::kNothingDone;
    }
    if (std::rename(legacyFile.c_str(), newFile.c_str()) == 0) {
        KXP_LOG(LogMilestone, "Migration successful");
        return Code::kOk;
    }
    LogMoveFailed(legacyFile, newFile);
    KXP_LOG(LogFailure, "Failed to move legacy file to new location. Continuing without old data");
    // Given up on purpose: a file that cannot be moved would be tried again, and fail, on every start.
    FileDelete(legacyFile, true);
    return Code::kFailure;
}

int FileDelete(const std::string& path, bool force) {
    HeldLog log;
    return FileDelete(path, force, log);
}

int FileDelete(const std::string& path, bool, HeldLog& log) {
    FileAttrNormal(path);
    if (std::remove(path.c_str()) == 0) return Code::kOk;
    char error[16];
    std::snprintf(error, sizeof error, "0x%08x", static_cast<unsigned>(errno));
    log.Add(LogFailure, "Failed to delete file " + path + ": " + error);
    return Code::kFailure;
}

void FileAttrNormal(const std::string& path) {
    // Fails on a symbolic link, as it should. Where a failure matters, the call that follows reports it.
    const bool changed = fchmodat(AT_FDCWD, path.c_str(), kNormalMode, AT_SYMLINK_NOFOLLOW) == 0;
    (void)changed;
}

int FileTime(const std::string& path, int64_t& seconds) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return Code::kNotFound;
    seconds = status.st_mtime;
    return Code::kOk;
}

int FileSizeKB(const std::string& path, int& kilobytes) {
    kilobytes = 0;
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return Code::kNotFound;
    kilobytes = FileSizeKB(status);
    return Code::kOk;
}

int FileSizeKB(const struct stat& status) {
    // A sparse file can claim more than an int of kilobytes.
    return static_cast<int>(std::min<int64_t>((static_cast<int64_t>(status.st_size) + 999) / 1000, INT_MAX));
}

int FileUnlockedCheckAndWait(const std::string&, unsigned int) {
    return Code::kOk;
}

}  // namespace KXP
