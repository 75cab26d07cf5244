// An end of a handler chain that keeps what reaches it, in order, with the thread it came on.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "common/message/MessageHandler.h"
#include "tests/support/Counter.h"

class MessageRecorder : public KXP::MessageSink<KXP::JSONMessage> {
  public:
    struct Entry {
        std::unique_ptr<KXP::JSONMessage> message;
        std::thread::id thread;
    };

    bool HandleMsg(std::unique_ptr<KXP::JSONMessage> message) override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            entries_.push_back({std::move(message), std::this_thread::get_id()});
        }
        arrived.Add();
        return true;
    }

    size_t size() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return entries_.size();
    }

    const KXP::JSONMessage& operator[](size_t i) const {
        std::lock_guard<std::mutex> lock(mutex_);
        return *entries_.at(i).message;
    }

    std::thread::id ThreadOf(size_t i) const {
        std::lock_guard<std::mutex> lock(mutex_);
        return entries_.at(i).thread;
    }

    // The uniqueids in the order of arrival, with a blank between them.
    std::string Order() const {
        std::lock_guard<std::mutex> lock(mutex_);
        std::string order;
        for (const Entry& entry : entries_)
            order += (order.empty() ? "" : " ") + std::string(entry.message->uniqueid());
        return order;
    }

    Counter arrived;

  private:
    mutable std::mutex mutex_;
    std::vector<Entry> entries_;
};

// A request from a page, with this uniqueid.
inline std::unique_ptr<KXP::JSONMessage> PageRequest(const std::string& method, const std::string& uniqueid,
                                                     const std::string& payload = "{}") {
    auto message = KXP::Message::CreateRequest("CobalixNative", "Gallery", method.c_str(), "Web", "Page",
                                               payload.c_str());
    message->set_uniqueid(uniqueid.c_str());
    return message;
}
