// Messages on their way to a page, and how many of them wait for a slow one.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>

namespace host::page {

// One text message. Several sockets may share most of it.
struct Frame {
    enum class Kind { kAnswer, kNotification, kOther };

    size_t size() const { return head.size() + (rest ? rest->size() : 0); }

    Kind kind = Kind::kOther;
    std::string head;
    std::shared_ptr<const std::string> rest;  // follows `head`; may be null
};

// The frames for one socket, within bounds. While a page reads too slowly, its notifications give way to a
// single {"resync":true}, at which it asks for everything anew.
class OutQueue {
  public:
    struct Bounds {
        size_t resync = size_t{32} << 20;
        size_t close = size_t{64} << 20;
    };
    explicit OutQueue(Bounds bounds) : bounds_(bounds) {}

    // False when the socket is to be closed: there is too much that cannot be left out.
    [[nodiscard]] bool Push(Frame frame);

    bool empty() const { return frames_.empty(); }
    // The next frame, which stays until Pop and is no longer left out.
    const Frame& BeginWrite();
    void Pop();

    size_t bytes() const { return bytes_; }

  private:
    void DropNotifications();

    const Bounds bounds_;
    std::deque<Frame> frames_;
    size_t bytes_ = 0;
    bool writing_ = false;
    bool resyncWaits_ = false;  // and stands for all notifications until it is written
};

}  // namespace host::page
