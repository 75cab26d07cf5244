// What sockets and routes ask of the plug-in, and what they are sent. The sockets run on the server's thread;
// the bus does its work on the thread that talks with the plug-in.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "gallery-host/page/Frame.h"
#include "gallery-host/page/HttpMessage.h"

namespace host::page {

using SocketId = uint64_t;

class IPageSocket {
  public:
    virtual ~IPageSocket() = default;
    // May be called from any thread, also when the socket is closed already. One frame with
    // Frame::Kind::kAnswer ends one frame of the page.
    virtual void Send(Frame frame) = 0;
    // Ends one frame of the page that gets no answer.
    virtual void EndUnanswered() = 0;
};

struct Thumbnail {
    std::string png;  // empty without a thumbnail
};

struct ThumbnailRequest {
    std::string path;
    unsigned width = 0;
    unsigned height = 0;
    TicketRef ticket;
    std::function<void(const Thumbnail&)> done;  // on any thread
};

// All calls may come from any thread and return at once.
class IPageBus {
  public:
    virtual ~IPageBus() = default;
    virtual void Open(SocketId id, std::weak_ptr<IPageSocket> socket) = 0;
    // A frame of an open socket.
    virtual void Receive(SocketId id, std::string text) = 0;
    virtual void Close(SocketId id) = 0;
    virtual void MakeThumbnail(ThumbnailRequest request) = 0;
};

}  // namespace host::page
