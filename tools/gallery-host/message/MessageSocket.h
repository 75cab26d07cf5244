// Receives messages of the plug-in's child processes on a datagram socket, whose path is in their
// environment. Each datagram is one envelope; fields that it lacks are filled in.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "base/FileDescriptor.h"

namespace host {

class MessageSocket {
  public:
    static constexpr const char* kVariable = "GALLERY_HOST_MESSAGES";
    static constexpr size_t kMaxBytes = size_t{64} << 10;

    // Creates a new folder that only this user can open. Construct it before there are threads, because the
    // environment has no lock. A failure is reported and leaves the socket closed: messages are then lost.
    MessageSocket();
    // Removes the folder. If the host is killed, the next one removes it.
    ~MessageSocket();
    MessageSocket(const MessageSocket&) = delete;
    MessageSocket& operator=(const MessageSocket&) = delete;

    // Readable while there are messages; -1 when closed.
    int fd() const { return socket_.get(); }
    bool HasMore() const;
    // The oldest message, if there is one. One that is too long is reported and dropped.
    std::optional<std::string> Take();

  private:
    void Open();
    void Close();

    std::string folder_;
    KXP::FileDescriptor socket_;
};

}  // namespace host
