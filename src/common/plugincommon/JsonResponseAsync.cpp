#include "common/plugincommon/JsonResponseAsync.h"

#include <utility>

#include "CobalixUtil.h"
#include "common/results/Exception.h"

namespace KXP {
namespace {

RetVal LogCaught(const char* operation) {
    RetVal value = ExceptionToRetVal();
    KXP_LOG(LogFailure, "Caught exception while calling %s: %s", operation, ToStr(value).c_str());
    return value;
}

}  // namespace

JsonResponseAsyncBase::JsonResponseAsyncBase(PluginModuleBase& module, std::unique_ptr<JSONMessage> request)
    : ITask(request->uniqueid()), module_(module), request_(std::move(request)) {}

TaskStatus JsonResponseAsyncBase::ExecuteTask(TaskQueue&) {
    try {
        result_ = ExecuteAsync(std::as_const(*request_).payload());
    } catch (...) {
        result_ = LogCaught("ExecuteAsync");
    }
    return result_.code == Code::kPending ? TaskStatusPending : TaskStatusDone;
}

void JsonResponseAsyncBase::FinishTask() {
    module_.task_queue().AssertOnWorker();
    auto response = Message::CreateResponse(*request_);
    // A task that returned Pending is finished by now; that code is never sent.
    if (result_.code == Code::kPending) result_ = {};
    if (!result_.Failed()) {
        try {
            FinishAsync(response->payload(), response->allocator());
        } catch (...) {
            // An object that could not grow for want of memory must not be used further.
            response->payload().SetObject();
            result_ = LogCaught("FinishAsync");
        }
    }
    if (result_.Failed()) module_.ReportError(result_, request_->method());
    try {
        sendResponse(std::move(response), result_);
    } catch (...) {
        // Too large to be written, most likely. The request is still answered, without a body.
        result_ = LogCaught("sendResponse");
        sendResponse(Message::CreateResponse(*request_), result_);
    }
}

void JsonResponseAsyncBase::sendResponse(std::unique_ptr<JSONMessage> response, const RetVal& value) {
    if (!module_.SendResponse(std::move(response), value))
        KXP_LOG(LogFailure, "Unable to send JSON response");
}

JSONAsyncNotificationBase::JSONAsyncNotificationBase(PluginModuleBase& module,
                                                     std::unique_ptr<JSONMessage> message)
    : ITask(message->uniqueid()), module_(module), message_(std::move(message)) {}

TaskStatus JSONAsyncNotificationBase::ExecuteTask(TaskQueue&) {
    try {
        ExecuteAsync(std::as_const(*message_).payload());
    } catch (...) {
        static_cast<void>(LogCaught("ExecuteAsync"));
    }
    return TaskStatusDone;
}

}  // namespace KXP
