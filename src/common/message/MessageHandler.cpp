#include "common/message/MessageHandler.h"

namespace KXP {

bool MessageHandler::ForwardMsg(std::unique_ptr<JSONMessage> message) {
    const bool response = Message::IsResponse(*message);
    IMessageHandler* const link = response ? responseHandler_.load() : requestHandler_.load();
    if (link) return link->SendMsg(std::move(message));
    KXP_LOG(LogFailure, "No message %s handler attached", response ? "response" : "request");
    return false;
}

bool MessageResponder::SendResponse(std::unique_ptr<JSONMessage> response, const RetVal& value) {
    if (!system_.empty()) response->set_source_system(system_.c_str());
    if (!module_.empty()) response->set_source_module(module_.c_str());
    Message::SetReturnValue(*response, value);
    return SendMsg(std::move(response));
}

bool QueueingMessageHandler::ForwardMsg(std::unique_ptr<JSONMessage> message) {
    if (!Queues(Message::IsResponse(*message) ? QueueResponses : QueueRequests))
        return MessageHandler::ForwardMsg(std::move(message));
    taskQueue_.EnqueueNotification(taskQueue_.Now(), [this, message = std::move(message)]() mutable {
        MessageHandler::ForwardMsg(std::move(message));
    });
    return true;
}

}  // namespace KXP
