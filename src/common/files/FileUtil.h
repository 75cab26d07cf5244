// Single files: tests, copy, move, migrate, delete, dates and sizes. Results named "code" are those of
// RetVal.h: 0 success, 1 nothing done, negative failure. Nothing here holds state.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

struct stat;

namespace KXP {

class HeldLog;

// Something is at the path and it cannot be opened as a folder. A folder that may not be read thus counts as
// a file; callers only ask about what they may read.
bool FileExists(const std::string& path);

// A regular file itself, and no link to one.
bool IsRegularFile(const std::string& path);

// Copies the bytes of a regular file, and its owner and mode as far as the volume takes them; returns a code.
// Links are followed. Nothing is truncated: a longer old destination keeps its tail. After a failure the
// destination is partly written.
int FileCopy(const std::string& source, const std::string& destination);

// The same to a place where nothing is yet, as many bytes as there are when the file is opened. The copy
// appears once it is whole, and nothing is left of one that fails or is cancelled (0x80004004).
int FileCopyNew(const std::string& source, const std::string& destination,
                const std::atomic<bool>& cancelled);

// Renames; returns a code. Never copies, so it fails between volumes.
int FileMove(const std::string& source, const std::string& destination);
// The same to a place where nothing is yet.
int FileMoveNew(const std::string& source, const std::string& destination);

// Moves a file from its legacy place to its new one; made to be called on every start. Returns 1 when both
// paths are the same or the new file exists already, which wins, and 0x80004005 when the move failed. The
// legacy file is deleted in the last two cases.
int FileMigrate(const std::string& legacyFile, const std::string& newFile);

// Removes a file, a symbolic link (never what it leads to) or an empty folder; returns a code. `force` is for
// platforms where a write-protected file needs it.
int FileDelete(const std::string& path, bool force);
// The same for a caller that holds a lock.
int FileDelete(const std::string& path, bool force, HeldLog& log);

// Makes the file readable and writable, except through a symbolic link.
void FileAttrNormal(const std::string& path);

// Modification time in seconds since 1970; 0x80070002 when there is no such file.
int FileTime(const std::string& path, int64_t& seconds);

// Size in units of 1000 bytes, rounded up. By path it returns a code: 0x80070002, and 0 kilobytes, when there
// is no such file.
int FileSizeKB(const std::string& path, int& kilobytes);
int FileSizeKB(const struct stat& status);

// Files are not locked by readers on this platform: always 0, at once.
int FileUnlockedCheckAndWait(const std::string& path, unsigned int milliseconds);

}  // namespace KXP
