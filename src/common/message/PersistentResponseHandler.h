// Turns persistent requests into standing subscriptions and copies each notification to every subscriber.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/message/MessageHandler.h"

namespace KXP {

class PersistentResponseHandler : public QueueingMessageHandler {
  public:
    using QueueingMessageHandler::QueueingMessageHandler;

    bool SendMsg(std::unique_ptr<JSONMessage> message) override;

  private:
    struct Subscriber {
        std::string system;
        std::string module;
        std::string uniqueid;
    };

    void Subscribe(const JSONMessage& request) EXCLUDES(mutex_);
    bool FanOut(std::unique_ptr<JSONMessage> notification) EXCLUDES(mutex_);

    Mutex mutex_;
    std::map<std::string, std::vector<Subscriber>> subscribers_ GUARDED_BY(mutex_);
};

}  // namespace KXP
