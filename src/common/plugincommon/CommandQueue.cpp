#include "CobalixUtil.h"
#include "common/plugincommon/PluginModuleBase.h"
#include "common/results/Exception.h"

namespace KXP {

PluginModuleBase::CommandQueue::CommandQueue(PluginModuleBase& module, TaskQueue& taskQueue,
                                             std::string systemName, std::string moduleName)
    : module_(module),
      taskQueue_(taskQueue),
      systemName_(std::move(systemName)),
      moduleName_(std::move(moduleName)) {}

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
    return Enqueue(std::move(message), &IContainerConnector::Stop);
}

int PluginModuleBase::CommandQueue::Pause(std::shared_ptr<JSONMessage> message) {
    return Enqueue(std::move(message), &IContainerConnector::Pause);
}

int PluginModuleBase::CommandQueue::Resume(std::shared_ptr<JSONMessage> message) {
    return Enqueue(std::move(message), &IContainerConnector::Resume);
}

int PluginModuleBase::CommandQueue::Enqueue(std::shared_ptr<JSONMessage> message, Command command) {
    // Made beforehand: a command that has begun is answered, also when memory runs out.
    auto response = Message::CreateResponse(*message);
    taskQueue_.EnqueueCommand(
        [this, message = std::move(message), response = std::move(response), command]() mutable {
            Run(std::move(response), [&] { return (module_.*command)(message); });
        });
    return Accepted;
}

void PluginModuleBase::CommandQueue::Run(std::unique_ptr<JSONMessage> response,
                                         const std::function<int()>& command) {
    int result = Failed;
    try {
        result = command();
    } catch (...) {
        const RetVal failure = ExceptionToRetVal();
        KXP_LOG(LogFailure, "Command %s failed: %s", response->method(), ToStr(failure).c_str());
        Message::SetReturnValue(*response, failure);
    }
    NotifyContainer(result == Succeeded ? CommandSucceeded : CommandFailed, std::move(response));
}

int PluginModuleBase::CommandQueue::Uninitialize(std::shared_ptr<JSONMessage> message) {
    taskQueue_.StopAndJoin();
    return module_.Uninitialize(std::move(message));
}

}  // namespace KXP
