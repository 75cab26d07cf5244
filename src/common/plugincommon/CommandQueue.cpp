#include <exception>

#include "CobalixUtil.h"
#include "common/plugincommon/PluginModuleBase.h"
#include "common/product/Profile.h"
#include "common/results/Exception.h"

namespace KXP {

PluginModuleBase::CommandQueue::CommandQueue(PluginModuleBase& module, TaskQueue& taskQueue,
                                             std::string systemName, std::string moduleName)
    : module_(module),
      taskQueue_(taskQueue),
      systemName_(std::move(systemName)),
      moduleName_(std::move(moduleName)) {}

// Takes no memory of its own, or a command might end without a report.
template <typename Work>
void PluginModuleBase::CommandQueue::Run(std::unique_ptr<JSONMessage> response, const Work& command,
                                         Report* report) noexcept {
    try {
        const int result = ResultOf(command, *response);
        if (report && report->made.exchange(true)) return;
        NotifyContainer(result == Succeeded ? CommandSucceeded : CommandFailed, std::move(response));
    } catch (...) {
        // With its last message the container notices that the command is lost.
        KXP_LOG(LogFailure, "No memory to report the end of a command");
    }
}

template <typename Work>
int PluginModuleBase::CommandQueue::ResultOf(const Work& command, JSONMessage& response) {
    try {
        return command();
    } catch (...) {
        const RetVal failure = ExceptionToRetVal();
        KXP_LOG(LogFailure, "Command %s failed: %s", response.method(), ToStr(failure).c_str());
        Message::SetReturnValue(response, failure);
        return Failed;
    }
}

int PluginModuleBase::CommandQueue::Initialize(IMessageHandler<JSONMessage>* jsonHandler,
                                               std::unique_ptr<JSONMessage> initMessage,
                                               IMessageHandler<GenericMessage>* genericHandler) {
    taskQueue_.Start();
    auto response = Message::CreateResponse(*initMessage);
    taskQueue_.EnqueueCommand([this, jsonHandler, genericHandler, initMessage = std::move(initMessage),
                               response = std::move(response)]() mutable {
        Run(std::move(response),
            [&] { return module_.Initialize(jsonHandler, std::move(initMessage), genericHandler); });
    });
    return Accepted;
}

int PluginModuleBase::CommandQueue::Start(std::shared_ptr<JSONMessage> message) {
    return Enqueue(std::move(message), &IContainerConnector::Start);
}

int PluginModuleBase::CommandQueue::Stop(std::shared_ptr<JSONMessage> message) {
    EndWatch();
    const auto report = std::make_shared<Report>();
    auto response = Message::CreateResponse(*message);
    taskQueue_.EnqueueCommand([this, message, report, response = std::move(response)]() mutable {
        Run(
            std::move(response), [&] { return module_.Stop(message); }, report.get());
        report->end.Report();
    });
    WatchStop(std::move(message), report);
    return Accepted;
}

// The container waits for the end of a stop: if the worker is stuck, the stop has failed.
void PluginModuleBase::CommandQueue::WatchStop(std::shared_ptr<JSONMessage> message,
                                               const std::shared_ptr<Report>& report) {
    stopReport_ = report;
    try {
        stopWatch_ = std::thread([this, message = std::move(message), report] {
            NameLibraryThread("STOP");
            if (report->end.Await(taskQueue_.progress()) || report->made.exchange(true)) return;
            KXP_LOG(LogFailure, "%s could not be stopped, because its worker is stuck", moduleName_.c_str());
            ReportStuck(*message);
        });
    } catch (const std::exception&) {
        KXP_LOG(LogFailure, "No thread to watch the stop of %s", moduleName_.c_str());
    }
}

void PluginModuleBase::CommandQueue::ReportStuck(const JSONMessage& message) noexcept {
    try {
        auto response = Message::CreateResponse(message);
        Message::SetReturnValue(*response, {Code::kTimedOut, "The worker is stuck", 0});
        NotifyContainer(CommandFailed, std::move(response));
    } catch (const std::exception& error) {
        KXP_LOG(LogFailure, "The end of a stop is not reported: %s", error.what());
    }
}

void PluginModuleBase::CommandQueue::EndWatch() {
    if (!stopWatch_.joinable()) return;
    stopReport_->end.Report();
    stopWatch_.join();
}

int PluginModuleBase::CommandQueue::Pause(std::shared_ptr<JSONMessage> message) {
    return Enqueue(std::move(message), &IContainerConnector::Pause);
}

int PluginModuleBase::CommandQueue::Resume(std::shared_ptr<JSONMessage> message) {
    return Enqueue(std::move(message), &IContainerConnector::Resume);
}

int PluginModuleBase::CommandQueue::Enqueue(std::shared_ptr<JSONMessage> message, Command command) {
    // Made beforehand, as for a stop: a command that has begun is answered, also when memory runs out.
    auto response = Message::CreateResponse(*message);
    taskQueue_.EnqueueCommand(
        [this, message = std::move(message), response = std::move(response), command]() mutable {
            Run(std::move(response), [&] { return (module_.*command)(message); });
        });
    return Accepted;
}

int PluginModuleBase::CommandQueue::Uninitialize(std::shared_ptr<JSONMessage> message) {
    EndWatch();
    auto end = [this, message] {
        taskQueue_.StopAndJoin();
        taskQueue_.NoteProgress();
        static_cast<void>(module_.Uninitialize(message));
    };
    if (!RunUnlessStuck(std::move(end), taskQueue_.progress(), owned_)) module_.AbandonAll();
    return Succeeded;
}

}  // namespace KXP
