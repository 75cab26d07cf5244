// The verb page: shows the gallery in a browser.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host::page {

struct PageOptions {
    std::optional<uint16_t> port;  // the first free one of kPorts if there is none
    bool open = true;              // the user's browser
    bool app = false;              // in a window of its own, with which the server ends
    std::string version;           // of this program
};

// Not assigned to any service, and below the ports that systems hand out themselves.
constexpr uint16_t kFirstPort = 26173;
constexpr uint16_t kPorts = 5;

// Reads the page's files and looks for the browser, so that what is missing ends the program early. The
// result serves until an interrupt, or until the window is closed. Both throw Failure.
std::function<void(Session&, Output&)> PreparePage(const PageOptions& options);

}  // namespace host::page
