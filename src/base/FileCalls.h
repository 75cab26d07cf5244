// The file calls that differ between systems. Those that return a bool set errno on failure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

struct stat;
struct timespec;

namespace KXP::Platform {

// For open: a folder that is only the start of other calls' paths, which needs no right to read it.
extern const int kFolderForLookup;

// Opens a path below an open folder, or below one that is open for lookup, with the flags of open. Fails
// instead of leaving the folder or following a link, whatever happens to the names meanwhile. Returns -1 with
// errno set: EXDEV or ELOOP for a path that does either.
int OpenBeneath(int folder, const std::string& path, int flags);

// The path of an open file or folder as it is at this moment, without links in it; empty when it is unknown.
std::string PathOf(int fd);

// Whether the path leads to a folder, as far as the system knows without waiting for a disk or a server;
// false too where it would have to ask one.
bool IsKnownFolder(const std::string& path);

// When the content last changed, and when anything of the file did, its name among it.
timespec ModifiedTime(const struct stat& status);
timespec ChangedTime(const struct stat& status);

// The first of them in nanoseconds since 1970.
int64_t ModifiedNs(const struct stat& status);

// Whether the volume of an existing path gives a file the same inode number each time it is mounted.
bool KeepsInodes(const std::string& path);

// Returns when what was written to the file would outlast a loss of power.
bool MakeDurable(int fd);
// The same for everything that was written to the volume of the file or folder.
bool MakeVolumeDurable(int fd);
// The same for the names in a folder that is open for reading.
bool MakeNamesDurable(int folder);

// Gives the file disk space for `size` bytes, at least one, and at least that length. The content stays and
// zero bytes follow it. False when there is no room; the length may then have grown.
bool ReserveFileSpace(int fd, int64_t size);

// Renames unless anything, even a link to nowhere, has the new name: EEXIST. Each path starts at its open
// folder, or at the current one for AT_FDCWD. Where the volume cannot do both in one step, a file that
// appears at that very moment is replaced.
bool RenameNoReplace(int fromFolder, const std::string& from, int toFolder, const std::string& to);

// Copies up to `size` bytes from `position` of one file to position `target` of another inside the kernel; on
// volumes that can share blocks the two files then share them. Returns the number of bytes, or less than 1 at
// the end of the file and where this cannot be done.
int64_t CopyFileRange(int from, uint64_t position, int to, uint64_t target, size_t size);
// Begins to read the first bytes of a file into memory, without waiting.
void StartReading(int fd, uint64_t size);
// Begins to write what the file has in memory to its disk, without waiting.
void StartWriteback(int fd);

// Whether any process has this file, which is open for reading alone, open for writing. False where that
// cannot be known, for a file of somebody else among others.
bool IsOpenForWriting(int fd);

}  // namespace KXP::Platform
