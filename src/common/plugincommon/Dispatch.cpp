// How a module handles the messages that reach it.

#include "CobalixUtil.h"
#include "common/plugincommon/PluginModuleBase.h"
#include "common/results/Exception.h"

namespace KXP {

bool PluginModuleBase::HandleMsg(std::unique_ptr<JSONMessage> message) {
    taskQueue_.AssertOnWorker();
    if (!started_) {
        KXP_LOG(LogFailure, "Module has not been started");
        return false;
    }
    const std::string method = Message::Method(*message);
    if (Message::IsResponse(*message)) return HandleResponse(method, std::move(message));
    if (Message::IsPersistent(*message)) return false;

    auto response = Message::CreateResponse(*message);
    const auto handler = apiHandlers_.find(method);
    if (handler == apiHandlers_.end()) return AnswerUnknown(method, std::move(response));

    const RetVal value = CallHandler(handler->second, std::move(message), *response);
    if (value.code == Code::kPending) return true;  // the task sends its own response
    if (value.Failed()) {
        ReportError(value, method);
        // An object that could not grow for want of memory must not be used further.
        response->payload().SetObject();
    }
    return SendResponse(std::move(response), value);
}

bool PluginModuleBase::HandleMsg(std::unique_ptr<GenericMessage>) {
    // Generic messages have no handlers.
    if (!started_) KXP_LOG(LogFailure, "Module has not been started");
    return started_;
}

bool PluginModuleBase::HandleResponse(const std::string& method, std::unique_ptr<JSONMessage> message) {
    const std::string sender = std::string(message->source_system()) + "." + message->source_module();
    const auto listener = notificationListeners_.find(sender + "." + method);
    if (listener == notificationListeners_.end()) return false;
    try {
        listener->second(std::move(message));
    } catch (...) {
        KXP_LOG(LogFailure, "Notification %s could not be handled: %s", method.c_str(),
                ToStr(ExceptionToRetVal()).c_str());
    }
    return true;
}

bool PluginModuleBase::AnswerUnknown(const std::string& method, std::unique_ptr<JSONMessage> response) {
    if (Message::IsAnnouncement(method)) return true;
    const RetVal value{Code::kNotImplemented, "Could not find registered API for " + method, 0};
    KXP_LOG(LogFailure, "%s", ToStr(value).c_str());
    ReportError(value, method);
    return SendResponse(std::move(response), value);
}

RetVal PluginModuleBase::CallHandler(const RequestHandler& handler, std::unique_ptr<JSONMessage> message,
                                     JSONMessage& response) {
    try {
        return handler(std::move(message), response.payload(), response.allocator());
    } catch (...) {
        return ExceptionToRetVal();
    }
}

}  // namespace KXP
