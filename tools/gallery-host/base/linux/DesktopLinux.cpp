#include <cstdlib>

#include "gallery-host/base/Desktop.h"

namespace host::Platform {

const char* const kOpener = "xdg-open";

const std::vector<std::string>& AppBrowsers() {
    static const std::vector<std::string> names = {"chromium", "chromium-browser", "google-chrome-stable",
                                                   "google-chrome"};
    return names;
}

void SetHome(const std::string& home) {
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_DATA_HOME", (home + "/.local/share").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home + "/.config").c_str(), 1);
    setenv("XDG_CACHE_HOME", (home + "/.cache").c_str(), 1);
}

}  // namespace host::Platform
