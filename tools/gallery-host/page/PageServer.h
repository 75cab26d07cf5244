// The page's server on this computer's own addresses: HTTP for files, pictures and videos, and a WebSocket
// for messages. It runs on one thread, with a few more that wait for the disk.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "gallery-host/page/Frame.h"
#include "gallery-host/page/Site.h"

namespace host::page {

struct ServerLimits {
    size_t connections = 64;  // that are no sockets
    size_t sockets = 128;
    size_t requestsPerSocket = 64;  // unanswered; the next ones are not read
    size_t headerBytes = size_t{8} << 10;
    size_t messageBytes = size_t{256} << 10;
    std::chrono::milliseconds header{10000};    // for a whole request, from its first byte
    std::chrono::milliseconds idle{60000};      // between requests
    std::chrono::milliseconds progress{60000};  // for each part of an answer to be taken
    std::chrono::milliseconds answer{60000};    // for the plug-in to answer a route
    std::chrono::milliseconds token{10000};     // for the first frame of a socket
    OutQueue::Bounds out;
};

class PageServer {
  public:
    // Takes the first of the ports that is free on 127.0.0.1 and, where the system has it, ::1; port 0 is any
    // free one. Throws Failure when none is. `parts` must outlive this object, and the bus no longer calls
    // its sockets once this object is being destroyed.
    PageServer(const Site::Parts& parts, const std::vector<uint16_t>& ports, const ServerLimits& limits,
               const std::string& version);
    ~PageServer();  // closes all connections
    PageServer(const PageServer&) = delete;
    PageServer& operator=(const PageServer&) = delete;

    // Call these before Start.
    std::string NewLaunchAddress();
    // The path of a file that leads a browser to such an address; it is removed once it was used.
    std::string NewLaunchFile();

    void Start();
    uint16_t port() const;

  private:
    class Impl;
    const std::unique_ptr<Impl> impl_;
};

}  // namespace host::page
