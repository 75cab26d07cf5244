// Matches the answers to requests that the module sent with the callbacks that wait for them.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "common/message/MessageHandler.h"

namespace KXP {

template <typename T>
class RequestCallbackManager : public QueueingMessageHandler<T> {
  public:
    // Receives the answer and its result, or no message and Code::kTimedOut.
    using Callback = std::function<void(std::unique_ptr<T>, RetVal)>;

    using QueueingMessageHandler<T>::QueueingMessageHandler;

    // Sends a request. With a callback, unless the request is persistent, the answer goes to the callback: on
    // the worker when responses are queued. With `timeoutMs` of 0 or less it waits for ever.
    bool SendRequest(std::unique_ptr<T> message, Callback callback, int timeoutMs) {
        if (callback && !Message::IsPersistent(*message)) Register(*message, std::move(callback), timeoutMs);
        return this->ForwardMsg(std::move(message));
    }

    bool SendMsg(std::unique_ptr<T> message) override {
        if (!Message::IsResponse(*message) || Message::IsPersistent(*message))
            return this->ForwardMsg(std::move(message));
        auto callback = Take(message->reference_uniqueid());
        if (!callback) return this->ForwardMsg(std::move(message));
        Answer(std::move(*callback), std::move(message));
        return true;
    }

  private:
    void Register(const T& message, Callback callback, int timeoutMs) EXCLUDES(mutex_) {
        KXP_LOG(LogTrace, "Registering callback for method %s", message.method());
        const std::string uniqueid = message.uniqueid();
        {
            MutexLock lock(mutex_);
            callbacks_[uniqueid] = std::move(callback);
        }
        if (timeoutMs <= 0) return;
        const auto when = this->task_queue().Now() + std::chrono::milliseconds(timeoutMs);
        this->task_queue().EnqueueNotification(when, [this, uniqueid] { TimeOut(uniqueid); });
    }

    // Callbacks run without the mutex, so they may send requests themselves.
    std::optional<Callback> Take(const std::string& uniqueid) EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        const auto found = callbacks_.find(uniqueid);
        if (found == callbacks_.end()) return std::nullopt;
        Callback callback = std::move(found->second);
        callbacks_.erase(found);
        return callback;
    }

    void Answer(Callback callback, std::unique_ptr<T> message) {
        const RetVal value = Message::GetReturnValue(*message);
        if (!this->Queues(QueueResponses)) {
            callback(std::move(message), value);
            return;
        }
        auto deliver = [callback = std::move(callback), message = std::move(message), value]() mutable {
            callback(std::move(message), value);
        };
        this->task_queue().EnqueueNotification(this->task_queue().Now(), std::move(deliver));
    }

    void TimeOut(const std::string& uniqueid) {
        const auto callback = Take(uniqueid);
        if (callback) (*callback)(nullptr, {Code::kTimedOut, "Timed out", 0});
    }

    Mutex mutex_;
    std::map<std::string, Callback> callbacks_ GUARDED_BY(mutex_);
};

}  // namespace KXP
