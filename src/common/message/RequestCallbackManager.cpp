#include "common/message/RequestCallbackManager.h"

#include <chrono>
#include <utility>

namespace KXP {

bool RequestCallbackManager::SendRequest(std::unique_ptr<JSONMessage> message, Callback callback,
                                         int timeoutMs) {
    if (callback && !Message::IsPersistent(*message)) Register(*message, std::move(callback), timeoutMs);
    return ForwardMsg(std::move(message));
}

bool RequestCallbackManager::SendMsg(std::unique_ptr<JSONMessage> message) {
    if (!Message::IsResponse(*message) || Message::IsPersistent(*message))
        return ForwardMsg(std::move(message));
    auto callback = Take(message->reference_uniqueid());
    if (!callback) return ForwardMsg(std::move(message));
    Answer(std::move(*callback), std::move(message));
    return true;
}

void RequestCallbackManager::Register(const JSONMessage& message, Callback callback, int timeoutMs) {
    KXP_LOG(LogTrace, "Registering callback for method %s", message.method());
    const std::string uniqueid = message.uniqueid();
    {
        MutexLock lock(mutex_);
        callbacks_[uniqueid] = std::move(callback);
    }
    if (timeoutMs <= 0) return;
    const auto when = task_queue().Now() + std::chrono::milliseconds(timeoutMs);
    task_queue().EnqueueNotification(when, [this, uniqueid] { TimeOut(uniqueid); });
}

// Callbacks run without the mutex, so they may send requests themselves.
std::optional<RequestCallbackManager::Callback> RequestCallbackManager::Take(const std::string& uniqueid) {
    MutexLock lock(mutex_);
    const auto found = callbacks_.find(uniqueid);
    if (found == callbacks_.end()) return std::nullopt;
    Callback callback = std::move(found->second);
    callbacks_.erase(found);
    return callback;
}

void RequestCallbackManager::Answer(Callback callback, std::unique_ptr<JSONMessage> message) {
    const RetVal value = Message::GetReturnValue(*message);
    if (!Queues(QueueResponses)) {
        callback(std::move(message), value);
        return;
    }
    auto deliver = [callback = std::move(callback), message = std::move(message), value]() mutable {
        callback(std::move(message), value);
    };
    task_queue().EnqueueNotification(task_queue().Now(), std::move(deliver));
}

void RequestCallbackManager::TimeOut(const std::string& uniqueid) {
    const auto callback = Take(uniqueid);
    if (callback) (*callback)(nullptr, {Code::kTimedOut, "Timed out", 0});
}

}  // namespace KXP
