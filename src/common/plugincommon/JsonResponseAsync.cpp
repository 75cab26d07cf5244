#include "common/plugincommon/JsonResponseAsync.h"

#include <utility>

#include "CobalixUtil.h"
#include "common/json/StackDocument.h"
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
    if (result_.code == Code::kPending) return TaskStatusPending;
    WriteResponse();
    return TaskStatusDone;
}

void JsonResponseAsyncBase::WriteResponse() {
    if (result_.Failed()) return;
    try {
        auto response = Message::CreateResponse(*request_);
        module_.WriteBody(*response, [this](IJsonSink& sink) { WriteAsync(sink); });
        response_ = std::move(response);
    } catch (...) {
        result_ = LogCaught("FinishAsync");
    }
}

void JsonResponseAsyncBase::WriteAsync(IJsonSink& sink) {
    StackDocument document;
    (*document).SetObject();
    FinishAsync(*document, (*document).GetAllocator());
    (*document).Accept(sink);
}

void JsonResponseAsyncBase::FinishTask() {
    module_.task_queue().AssertOnWorker();
    // A task that returned Pending is finished by now; that code is never sent.
    if (result_.code == Code::kPending) {
        result_ = {};
        WriteResponse();
    }
    if (result_.Failed()) module_.ReportError(result_, request_->method());
    try {
        if (!response_) response_ = Message::CreateResponse(*request_);
        sendResponse(std::move(response_), result_);
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
