#include "gallery-host/page/Frame.h"

#include <algorithm>
#include <utility>

namespace host::page {
namespace {

constexpr const char* kResync = R"({"resync":true})";

}  // namespace

bool OutQueue::Push(Frame frame) {
    const size_t after = bytes_ + frame.size();
    if (frame.kind == Frame::Kind::kNotification) {
        if (resyncWaits_) return true;
        if (after > bounds_.resync && !frames_.empty()) {
            DropNotifications();
            resyncWaits_ = true;
            frame = {Frame::Kind::kOther, kResync, nullptr};
        }
    } else if (after > bounds_.close && !frames_.empty()) {
        return false;
    }
    bytes_ += frame.size();
    frames_.push_back(std::move(frame));
    return true;
}

const Frame& OutQueue::BeginWrite() {
    writing_ = true;
    // What happens from here on, the page learns after it.
    if (frames_.front().head == kResync) resyncWaits_ = false;
    return frames_.front();
}

void OutQueue::Pop() {
    writing_ = false;
    bytes_ -= frames_.front().size();
    frames_.pop_front();
}

void OutQueue::DropNotifications() {
    const auto first = frames_.begin() + (writing_ ? 1 : 0);
    const auto drop = [this](const Frame& frame) {
        if (frame.kind != Frame::Kind::kNotification) return false;
        bytes_ -= frame.size();
        return true;
    };
    frames_.erase(std::remove_if(first, frames_.end(), drop), frames_.end());
}

}  // namespace host::page
