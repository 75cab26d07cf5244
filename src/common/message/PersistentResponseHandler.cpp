#include "common/message/PersistentResponseHandler.h"

namespace KXP {

bool PersistentResponseHandler::SendMsg(std::unique_ptr<JSONMessage> message) {
    if (!Message::IsPersistent(*message)) return ForwardMsg(std::move(message));
    if (Message::IsResponse(*message)) return FanOut(std::move(message));
    Subscribe(*message);
    return true;
}

// Nobody unsubscribes, and a repeated subscription receives a second copy: pages count on both.
void PersistentResponseHandler::Subscribe(const JSONMessage& request) {
    KXP_LOG(LogDetail, "Registering notification listener for method %s", request.method());
    MutexLock lock(mutex_);
    subscribers_[request.method()].push_back(
        {request.source_system(), request.source_module(), request.uniqueid()});
}

bool PersistentResponseHandler::FanOut(std::unique_ptr<JSONMessage> notification) {
    // Forwarding reaches the container, which may subscribe from within: so from a copy, without the mutex.
    std::vector<Subscriber> subscribers;
    bool known = false;
    {
        MutexLock lock(mutex_);
        const auto found = subscribers_.find(notification->method());
        known = found != subscribers_.end();
        if (known) subscribers = found->second;
    }
    if (!known) return ForwardMsg(std::move(notification));
    for (const Subscriber& subscriber : subscribers) {
        auto copy = Message::CreateCopy(*notification);
        if (!subscriber.system.empty()) copy->set_target_system(subscriber.system.c_str());
        if (!subscriber.module.empty()) copy->set_target_module(subscriber.module.c_str());
        copy->set_reference_uniqueid(subscriber.uniqueid.c_str());
        ForwardMsg(std::move(copy));
    }
    return true;
}

}  // namespace KXP
