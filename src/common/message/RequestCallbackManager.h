// Matches the answers to requests that the module sent with the callbacks that wait for them.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "common/message/MessageHandler.h"

namespace KXP {

class RequestCallbackManager : public QueueingMessageHandler {
  public:
    // Receives the answer and its result, or no message and Code::kTimedOut.
    using Callback = std::function<void(std::unique_ptr<JSONMessage>, RetVal)>;

    using QueueingMessageHandler::QueueingMessageHandler;

    // Sends a request. With a callback, unless the request is persistent, the answer goes to the callback: on
    // the worker when responses are queued. With `timeoutMs` of 0 or less it waits for ever.
    bool SendRequest(std::unique_ptr<JSONMessage> message, Callback callback, int timeoutMs);

    bool SendMsg(std::unique_ptr<JSONMessage> message) override;

  private:
    void Register(const JSONMessage& message, Callback callback, int timeoutMs) EXCLUDES(mutex_);
    std::optional<Callback> Take(const std::string& uniqueid) EXCLUDES(mutex_);
    void Answer(Callback callback, std::unique_ptr<JSONMessage> message);
    void TimeOut(const std::string& uniqueid);

    Mutex mutex_;
    std::map<std::string, Callback> callbacks_ GUARDED_BY(mutex_);
};

}  // namespace KXP
