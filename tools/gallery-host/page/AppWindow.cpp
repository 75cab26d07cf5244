#include "gallery-host/page/AppWindow.h"

#include <chrono>
#include <cstdlib>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <unistd.h>

#include "base/Places.h"
#include "gallery-host/base/Desktop.h"
#include "gallery-host/base/Failure.h"

namespace host::page {
namespace {

constexpr std::chrono::seconds kTimeToClose{5};

// An absolute path as a file: address.
std::string FileAddress(const std::string& path) {
    std::string address = "file://";
    for (const char c : path) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                           std::string_view("/-._~").find(c) != std::string_view::npos;
        const auto byte = static_cast<unsigned char>(c);
        if (plain)
            address += c;
        else
            address.append(1, '%')
                .append(1, "0123456789ABCDEF"[byte >> 4])
                .append(1, "0123456789ABCDEF"[byte & 0x0F]);
    }
    return address;
}

std::vector<std::string> ArgumentsFor(const std::string& launchFile, uint16_t port) {
    // By port: a second server's window must not become a window of the first one's browser.
    const std::string profile =
        KXP::Platform::AppSupportFolder() + KXP::kProductFolder + "/PageProfile-" + std::to_string(port);
    return {"--app=" + FileAddress(launchFile), "--user-data-dir=" + profile, "--no-first-run",
            "--no-default-browser-check"};
}

}  // namespace

std::string FindAppBrowser() {
    const char* const path = std::getenv("PATH");
    for (const std::string& name : Platform::AppBrowsers()) {
        if (name[0] == '/' && access(name.c_str(), X_OK) == 0) return name;
        std::istringstream folders(path ? path : "/usr/bin");
        for (std::string file; std::getline(folders, file, ':');) {
            const bool isAbsolute = file.substr(0, 1) == "/";
            file.append("/").append(name);
            if (isAbsolute && access(file.c_str(), X_OK) == 0) return file;
        }
    }
    throw Failure(kExitFailed, "--app needs Chromium, which is not installed");
}

AppWindow::AppWindow(const std::string& browser, const std::string& launchFile, uint16_t port,
                     std::function<void()> onClosed) try
    : browser_(browser, ArgumentsFor(launchFile, port)), waiting_([this, onClosed = std::move(onClosed)] {
          browser_.Wait([](std::string_view) {});
          onClosed();
      }) {
} catch (const std::system_error& error) {
    throw Failure(kExitFailed, "cannot start " + browser + ": " + error.code().message());
}

AppWindow::~AppWindow() {
    browser_.Terminate(kTimeToClose);
    waiting_.join();
}

}  // namespace host::page
