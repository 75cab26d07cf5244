// Turns persistent requests into standing subscriptions and copies each notification to every subscriber.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/message/MessageHandler.h"

namespace KXP {

template <typename T>
class PersistentResponseHandler : public QueueingMessageHandler<T> {
  public:
    using QueueingMessageHandler<T>::QueueingMessageHandler;

    bool SendMsg(std::unique_ptr<T> message) override {
        if (!Message::IsPersistent(*message)) return this->ForwardMsg(std::move(message));
        if (Message::IsResponse(*message)) return FanOut(std::move(message));
        Subscribe(*message);
        return true;
    }

  private:
    struct Subscriber {
        std::string system;
        std::string module;
        std::string uniqueid;
    };

    // Nobody unsubscribes, and a repeated subscription receives a second copy: pages count on both.
    void Subscribe(const T& request) EXCLUDES(mutex_) {
        KXP_LOG(LogDetail, "Registering notification listener for method %s", request.method());
        MutexLock lock(mutex_);
        subscribers_[request.method()].push_back(
            {request.source_system(), request.source_module(), request.uniqueid()});
    }

    bool FanOut(std::unique_ptr<T> notification) EXCLUDES(mutex_) {
        // Forwarding reaches the container, which may subscribe from within: so from a copy, without the
        // mutex.
        std::vector<Subscriber> subscribers;
        bool known = false;
        {
            MutexLock lock(mutex_);
            const auto found = subscribers_.find(notification->method());
            known = found != subscribers_.end();
            if (known) subscribers = found->second;
        }
        if (!known) return this->ForwardMsg(std::move(notification));
        for (const Subscriber& subscriber : subscribers) {
            auto copy = Message::CreateCopy(*notification);
            if (!subscriber.system.empty()) copy->set_target_system(subscriber.system.c_str());
            if (!subscriber.module.empty()) copy->set_target_module(subscriber.module.c_str());
            copy->set_reference_uniqueid(subscriber.uniqueid.c_str());
            this->ForwardMsg(std::move(copy));
        }
        return true;
    }

    Mutex mutex_;
    std::map<std::string, std::vector<Subscriber>> subscribers_ GUARDED_BY(mutex_);
};

}  // namespace KXP
