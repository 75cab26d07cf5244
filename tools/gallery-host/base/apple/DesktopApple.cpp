#include <cstdlib>

#include "gallery-host/base/Desktop.h"

namespace host::Platform {

const char* const kOpener = "open";

const std::vector<std::string>& AppBrowsers() {
    static const std::vector<std::string> paths = {
        "/Applications/Chromium.app/Contents/MacOS/Chromium",
        "/Applications/Google Chrome.app/Contents/MacOS/Google Chrome"};
    return paths;
}

void SetHome(const std::string& home) {
    setenv("HOME", home.c_str(), 1);
    // The frameworks look up the user's home without this.
    setenv("CFFIXED_USER_HOME", home.c_str(), 1);
}

}  // namespace host::Platform
