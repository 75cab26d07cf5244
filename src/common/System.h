// The machine and the user's language, the environment, and the few calls that differ between systems.
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

// A descriptor that can be read once the process has ended; -1 for one that has ended and is forgotten.
int OpenExitDescriptor(pid_t pid);

// How a started program gets none of our descriptors beyond the standard three: by a flag, or by an action
// behind those that make these.
extern const int kSpawnCloses;
void CloseOtherDescriptors(posix_spawn_file_actions_t* actions);

// The names in a folder that can be reached (a dangling link cannot), without "." and "..", in the folder's
// own order; folders and links to folders when `folders`, everything else when not. Empty when the folder
// cannot be read.
std::vector<std::string> ListFolder(const std::string& folder, bool folders);

}  // namespace Platform
}  // namespace KXP
