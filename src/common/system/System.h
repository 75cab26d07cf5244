// The system's version, the user's language, the environment, and the calls that differ between systems.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/types.h>

#include "base/FileCalls.h"
#include "base/LibraryLoading.h"
#include "base/NamelessFile.h"
#include "common/results/RetVal.h"

namespace KXP {

// Thrown by value where there is nothing to say beyond the code.
enum class Error : int32_t {
    OutOfMemory = Code::kOutOfMemory,
    Unexpected = Code::kUnexpected,
};

// The system's version, for example "12"; empty when it is unknown.
std::string GetOsVersion();

// The user's language in the form "en-US".
std::string GetOsLocale();

// Fills `language` from GetOsLocale; always 0.
int GetUserLanguage(std::string& language);

// Not provided: always 0x80004005, and `locale` is left unchanged.
int GetLocale(std::string& locale);

// No value when the variable is unset.
std::optional<std::string> GetEnv(const std::string& name);
// No value unsets the variable; a failure is thrown as an Error. The environment belongs to the whole client:
// change it before other threads run.
void SetEnv(const std::string& name, const std::optional<std::string>& value);

namespace Platform {

// The environment of this process, as posix_spawn takes it.
char** Environment();

// The number by which the system knows the calling thread.
uint64_t ThreadNumber();

// A descriptor that becomes readable when the process has ended; -1 for one that was already waited for.
int OpenExitDescriptor(pid_t pid);

// Keeps our descriptors from a started program, all but the standard three: either by this flag of the spawn
// attributes, or by an action that CloseOtherDescriptors adds after those that make the three.
extern const int kSpawnCloses;
void CloseOtherDescriptors(posix_spawn_file_actions_t* actions);

// The names in a folder that can be reached (a dangling link cannot), without "." and "..", in the folder's
// own order; folders and links to folders when `folders`, everything else when not. Empty when the folder
// cannot be read.
std::vector<std::string> ListFolder(const std::string& folder, bool folders);

}  // namespace Platform
}  // namespace KXP
