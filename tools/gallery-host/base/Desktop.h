// What differs between desktops.
#pragma once

#include <string>
#include <vector>

namespace host::Platform {

// The program that opens a file or folder with the one that the user has chosen for it.
extern const char* const kOpener;

// Browsers that can show a page in a window of its own, the preferred one first: whole paths, or names of
// programs on the user's path.
const std::vector<std::string>& AppBrowsers();

// Leads this program and those that it starts to another home: their data, settings and caches.
void SetHome(const std::string& home);

}  // namespace host::Platform
