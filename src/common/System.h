// The user's language, the environment, and the calls that differ between systems.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/types.h>

#include "base/FileCalls.h"
#include "base/LibraryLoading.h"
#include "base/NamelessFile.h"

namespace KXP {

// The user's language in the form "en-US".
std::string GetOsLocale();

// Fills `language` from GetOsLocale; always 0.
int GetUserLanguage(std::string& language);

// No value when the variable is unset.
std::optional<std::string> GetEnv(const std::string& name);

namespace Platform {

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
