// The machine and the user's language, the environment, and the few calls that differ between systems.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/types.h>

#include "common/RetVal.h"

namespace KXP {

// Thrown by value where there is nothing to say beyond the code.
enum class Error : int32_t {
    OutOfMemory = Code::kOutOfMemory,
    Unexpected = Code::kUnexpected,
};

// The system's version, for example "12"; empty when it is not told.
std::string GetOsVersion();

// The user's language in the form "en-US".
std::string GetOsLocale();

// Fills `language` from GetOsLocale; always 0.
int GetUserLanguage(std::string& language);

// Not provided: always 0x80004005, and `locale` stays as it is.
int GetLocale(std::string& locale);

// No value when the variable is unset. Setting no value unsets; a failure is thrown as an Error. The
// environment is the whole client's: set it before other threads run.
std::optional<std::string> GetEnv(const std::string& name);
void SetEnv(const std::string& name, const std::optional<std::string>& value);

namespace Platform {

// What the file names of libraries end in, with the dot.
extern const char* const kLibrarySuffix;

// For dlopen: the library finds its own names and those of what it links before the process's, so that a host
// which carries other builds of the same libraries is not mistaken for them. 0 where that is always so.
int OwnScopeFlag();

// A descriptor that can be read once the process has ended; -1 for one that has ended and is forgotten.
int OpenExitDescriptor(pid_t pid);

// How a started program gets none of our descriptors beyond the standard three: by a flag, or by an action
// behind those that make these.
extern const int kSpawnCloses;
void CloseOtherDescriptors(posix_spawn_file_actions_t* actions);

// A file in the open folder that has no name, and goes when it is closed without one. -1 with errno set where
// there is no such thing.
int OpenNameless(int folder, unsigned mode);
// Gives it a name that nothing has. False with errno set.
bool GiveName(int fd, int folder, const std::string& name);

// Comes back when what was written to the file would outlast a loss of power. False with errno set when the
// disk did not take it.
bool MakeDurable(int fd);

// Gives the file disk space for `size` bytes, which are at least one, and at least that length; what it holds
// stays, and zero bytes follow it. False with errno set when there is no room; the length may then have
// grown.
bool ReserveFileSpace(int fd, int64_t size);

// Renames unless something, be it a link to nowhere, has the new name: false with errno set, EEXIST for that.
// Where the volume cannot do both in one step, something that comes just then is replaced.
bool RenameNoReplace(const std::string& from, const std::string& to);

// Copies up to `size` bytes from `position` of one file to the same place of another without their passing
// through here; where the volume can, the two then share them. Gives their number, or what is below 1 where
// this cannot be done and also at the end of the file.
int64_t CopyFileRange(int from, int to, uint64_t position, size_t size);

// The names in a folder that can be reached (a dangling link cannot), without "." and "..", in the folder's
// own order; folders and links to folders when `folders`, everything else when not. Empty when the folder
// cannot be read.
std::vector<std::string> ListFolder(const std::string& folder, bool folders);

}  // namespace Platform
}  // namespace KXP
