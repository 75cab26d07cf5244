// Where the plug-in's child processes send their messages: a datagram socket whose path they find in their
// environment. Each datagram is one envelope, or as much of one as there is to tell.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace host {

class MessageSocket {
  public:
    static constexpr const char* kVariable = "GALLERY_HOST_MESSAGES";
    static constexpr size_t kMaxBytes = size_t{64} << 10;

    // In a new folder that is this user's alone. Make it before there are threads, as the environment has no
    // lock. What keeps it from being made is said, and it stays closed: the messages are only missed.
    MessageSocket();
    ~MessageSocket();  // removes the folder; that of a host that was killed goes when the next is made
    MessageSocket(const MessageSocket&) = delete;
    MessageSocket& operator=(const MessageSocket&) = delete;

    // Readable while there are messages; -1 when closed.
    int fd() const { return fd_; }
    bool HasMore() const;
    // The oldest message, if there is one and it is not too long, which is said.
    std::optional<std::string> Take();

  private:
    void Open();
    void Close();

    std::string folder_;
    int fd_ = -1;
};

}  // namespace host
