// The page in a browser's window of its own, with a profile apart from the user's.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <thread>

#include "common/system/ChildProcess.h"

namespace host::page {

// The path of an installed browser that has such windows. Throws Failure when there is none.
std::string FindAppBrowser();

class AppWindow {
  public:
    // Opens the file in a window and calls `onClosed`, on another thread, once it is closed. Throws Failure
    // when the browser cannot be started.
    AppWindow(const std::string& browser, const std::string& launchFile, uint16_t port,
              std::function<void()> onClosed);
    ~AppWindow();  // closes the window
    AppWindow(const AppWindow&) = delete;
    AppWindow& operator=(const AppWindow&) = delete;

  private:
    KXP::ChildProcess browser_;
    std::thread waiting_;  // last: it uses the browser
};

}  // namespace host::page
