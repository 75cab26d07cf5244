// An end of a handler chain that keeps what reaches it, in order.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/message/MessageHandler.h"

class MessageRecorder : public KXP::MessageSink<KXP::JSONMessage> {
  public:
    bool HandleMsg(std::unique_ptr<KXP::JSONMessage> message) override {
        const KXP::JSONMessage& kept = *message;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            messages_.push_back(std::move(message));
        }
        if (onMessage) onMessage(kept);
        return true;
    }

    size_t size() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return messages_.size();
    }

    const KXP::JSONMessage& operator[](size_t i) const {
        std::lock_guard<std::mutex> lock(mutex_);
        return *messages_.at(i);
    }

    // The uniqueids in the order of arrival, with a blank between them.
    std::string Order() const {
        std::lock_guard<std::mutex> lock(mutex_);
        std::string order;
        for (const auto& message : messages_)
            order += (order.empty() ? "" : " ") + std::string(message->uniqueid());
        return order;
    }

    std::function<void(const KXP::JSONMessage&)> onMessage;  // on the thread that brings one

  private:
    mutable std::mutex mutex_;
    std::vector<std::unique_ptr<KXP::JSONMessage>> messages_;
};

// A request from a page, with this uniqueid.
inline std::unique_ptr<KXP::JSONMessage> PageRequest(const std::string& method, const std::string& uniqueid,
                                                     const std::string& payload = "{}") {
    auto message = KXP::Message::CreateRequest("CobalixNative", "Gallery", method.c_str(), "Web", "Page",
                                               payload.c_str());
    message->set_uniqueid(uniqueid.c_str());
    return message;
}
