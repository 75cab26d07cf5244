#include "common/plugincommon/PluginModuleBase.h"

#include <atomic>
#include <chrono>
#include <initializer_list>
#include <stdexcept>
#include <utility>

#include "CobalixUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "common/product/Config.h"
#include "common/results/Exception.h"

namespace KXP {
namespace {

using WallTime = std::chrono::system_clock::time_point;

double MillisecondsSince(WallTime start) {
    const auto passed = std::chrono::system_clock::now() - start;
    const auto us = std::chrono::duration_cast<std::chrono::microseconds>(passed).count();
    return static_cast<double>(us) / 1000000 * 1000;
}

// Each node's request side is the next node, and its response side the one before.
template <typename T>
void Link(std::initializer_list<IMessageHandler<T>*> nodes) {
    for (const auto* node = nodes.begin(); node + 1 < nodes.end(); ++node) {
        node[0]->SetRequestHandler(node[1]);
        node[1]->SetResponseHandler(node[0]);
    }
}

int Result(bool succeeded) {
    return succeeded ? IContainerConnector::Succeeded : IContainerConnector::Failed;
}

}  // namespace

PluginModuleBase::PluginModuleBase(std::string systemName, std::string moduleName,
                                   std::string_view apiSchemaText)
    : systemName_(std::move(systemName)),
      moduleName_(std::move(moduleName)),
      apiSchemaText_(apiSchemaText),
      taskQueue_(moduleName_),
      commandQueue_(std::make_unique<CommandQueue>(*this, taskQueue_, systemName_, moduleName_)) {}

PluginModuleBase::~PluginModuleBase() = default;

IContainerConnector* PluginModuleBase::HandOver(std::shared_ptr<PluginModuleBase> module) {
    CommandQueue* const instance = module->commandQueue_.get();
    module->taskQueue_.SetOwner(module);
    instance->owned_ = std::move(module);
    return instance;
}

void PluginModuleBase::TakeBack(IContainerConnector* instance) {
    if (!instance) return;
    const std::shared_ptr<PluginModuleBase> released =
        std::move(static_cast<CommandQueue*>(instance)->owned_);
}

int PluginModuleBase::Initialize(IMessageHandler<JSONMessage>* jsonHandler,
                                 std::unique_ptr<JSONMessage> initMessage,
                                 IMessageHandler<GenericMessage>* genericHandler) {
    taskQueue_.AssertOnWorker();
    CopyJSON(std::as_const(*initMessage).payload(), configuration_);
    jsonHandler_ = jsonHandler;
    if (!jsonHandler_) {
        KXP_LOG(LogFailure, "%s requires a JSON communication channel", moduleName_.c_str());
        return Failed;
    }
    const WallTime start = std::chrono::system_clock::now();
    try {
        BuildChain(genericHandler);
        return Result(ReadConfiguration() && RunInitializeHook());
    } catch (const std::exception& error) {
        // Also when the product's files cannot even be looked for.
        KXP_LOG(LogFailure, "Error initializing plugin: %s, took %.2fms", error.what(),
                MillisecondsSince(start));
        throw;  // for the response, which says why
    } catch (...) {
        KXP_LOG(LogFailure, "Unknown exception occurred during plugin initialization");
        throw;
    }
}

// Whole or not at all: everything that may fail comes before the links.
void PluginModuleBase::BuildChain(IMessageHandler<GenericMessage>* genericHandler) {
    Chain made;
    made.inboundQueue = std::make_shared<InitQueue>();
    made.outboundQueue = std::make_shared<InitQueue>();
    made.requestCallbacks = std::make_shared<RequestCallbackManager<JSONMessage>>(taskQueue_, QueueResponses);
    made.persistentResponses =
        std::make_shared<PersistentResponseHandler<JSONMessage>>(taskQueue_, QueueRequests);
    made.validator = std::make_shared<MessageValidator>(apiSchema_);
    made.responder = std::make_shared<MessageResponder<JSONMessage>>(systemName_, moduleName_);
    if (genericHandler)
        made.genericCallbacks =
            std::make_shared<RequestCallbackManager<GenericMessage>>(taskQueue_, QueueResponses);
    chain_ = std::move(made);

    // The module and the container end both lists; on the container the inbound list sets the request side.
    IMessageHandler<JSONMessage>* const module = static_cast<MessageSink<JSONMessage>*>(this);
    Link<JSONMessage>({module, chain_.requestCallbacks.get(), chain_.outboundQueue.get(), jsonHandler_});
    Link<JSONMessage>({jsonHandler_, chain_.persistentResponses.get(), chain_.validator.get(),
                       chain_.inboundQueue.get(), chain_.responder.get(), module});
    if (!genericHandler) return;
    IMessageHandler<GenericMessage>* const genericModule = static_cast<MessageSink<GenericMessage>*>(this);
    Link<GenericMessage>({genericModule, chain_.genericCallbacks.get(), genericHandler});
}

bool PluginModuleBase::ReadConfiguration() {
    // Once for the process: another instance of the module uses what the first has read.
    static std::atomic<bool> configsRead{false};
    if (!configsRead && Config::Instance().ReadConfigs().Failed()) {
        KXP_LOG(LogFailure, "Could not read config for %s", moduleName_.c_str());
        return false;
    }
    configsRead = true;
    const rapidjson::ParseResult parsed = ParseJSON(apiSchemaText_, apiSchema_);
    if (!parsed.IsError()) return true;
    KXP_LOG(LogFailure, "Could not parse API schema: %s (%u)", rapidjson::GetParseError_En(parsed.Code()),
            static_cast<unsigned>(parsed.Offset()));
    return false;
}

bool PluginModuleBase::RunInitializeHook() {
    KXP_LOG(LogMilestone, "Starting plugin Init for %s", moduleName_.c_str());
    const WallTime start = std::chrono::system_clock::now();
    if (!Initialize()) throw std::runtime_error("Initialize() failed");
    KXP_LOG(LogMilestone, "Successfully initialized %s, took %.2fms", moduleName_.c_str(),
            MillisecondsSince(start));
    return true;
}

bool PluginModuleBase::RunHook(const char* name, bool (PluginModuleBase::*hook)()) {
    try {
        return (this->*hook)();
    } catch (...) {
        KXP_LOG(LogFailure, "%s of %s failed: %s", name, moduleName_.c_str(),
                ToStr(ExceptionToRetVal()).c_str());
        return false;
    }
}

int PluginModuleBase::Start(std::shared_ptr<JSONMessage>) {
    taskQueue_.AssertOnWorker();
    if (!chain_.outboundQueue) return Failed;
    // The module can send while it starts; requests reach it only afterwards.
    chain_.outboundQueue->StartForwardingMessages();
    const bool succeeded = RunHook("Start", &PluginModuleBase::Start);
    chain_.inboundQueue->StartForwardingMessages();
    return Result(succeeded);
}

int PluginModuleBase::Stop(std::shared_ptr<JSONMessage>) {
    taskQueue_.AssertOnWorker();
    if (chain_.inboundQueue) chain_.inboundQueue->StopForwardingMessages();
    const bool succeeded = RunHook("Stop", &PluginModuleBase::Stop);
    if (chain_.outboundQueue) chain_.outboundQueue->StopForwardingMessages();
    return Result(succeeded);
}

int PluginModuleBase::Pause(std::shared_ptr<JSONMessage>) {
    return Result(RunHook("Pause", &PluginModuleBase::Pause));
}

int PluginModuleBase::Resume(std::shared_ptr<JSONMessage>) {
    return Result(RunHook("Resume", &PluginModuleBase::Resume));
}

int PluginModuleBase::Uninitialize(std::shared_ptr<JSONMessage>) {
    KXP_LOG(LogMilestone, "Starting plugin Uninit for %s", moduleName_.c_str());
    const WallTime start = std::chrono::system_clock::now();
    // The work is done: its result is worth more than the answer that it was aborted.
    if (chain_.inboundQueue) chain_.inboundQueue->DeliverAnswers();
    try {
        Uninitialize();
    } catch (...) {
        KXP_LOG(LogFailure, "Uninitialize of %s failed: %s", moduleName_.c_str(),
                ToStr(ExceptionToRetVal()).c_str());
    }
    taskQueue_.NoteProgress();
    LeaveContainer();
    KXP_LOG(LogMilestone, "Uninitialized plugin for %s, took %.2fms", moduleName_.c_str(),
            MillisecondsSince(start));
    return Succeeded;
}

void PluginModuleBase::LeaveContainer() {
    if (!chain_.inboundQueue) return;
    // The container's handler is destroyed after this, while an abandoned task may still hold the module and
    // send.
    chain_.inboundQueue->StopForwardingMessages();
    chain_.outboundQueue->StopForwardingMessages();
    chain_.persistentResponses->SetResponseHandler(nullptr);
    chain_.outboundQueue->SetRequestHandler(nullptr);
}

void PluginModuleBase::AbandonAll() {
    KXP_LOG(LogFailure, "%s is stuck, on a disk that does not answer perhaps, and is left to itself",
            moduleName_.c_str());
    abandoned_ = true;
    // What is stuck may be a forward, so nobody waits for it; the container's end refuses what comes later.
    if (chain_.inboundQueue) {
        chain_.inboundQueue->Close();
        chain_.outboundQueue->Close();
    }
    Abandon();
}

void PluginModuleBase::ReportError(const RetVal& value, const std::string& method) {
    KXP_LOG(LogFailure, "Skipping telemetry report of error %s from method %s", ToStr(value).c_str(),
            method.c_str());
}

bool PluginModuleBase::SendResponse(std::unique_ptr<JSONMessage> response, const RetVal& value) {
    return chain_.responder && chain_.responder->SendResponse(std::move(response), value);
}

void PluginModuleBase::WriteBody(JSONMessage& response, const BodySource& body) {
    if (chain_.validator) chain_.validator->WriteBody(response, body);
}

void PluginModuleBase::RegisterNotificationSyncFn(const std::string& system, const std::string& module,
                                                  const std::string& method, NotificationListener listener) {
    const bool isNew =
        notificationListeners_.insert_or_assign(system + "." + module + "." + method, std::move(listener))
            .second;
    // The other module keeps a subscription while this one is stopped, and would send a copy for each.
    if (!isNew) return;
    auto subscription = Message::CreateRequest(system.c_str(), module.c_str(), method.c_str(),
                                               systemName_.c_str(), moduleName_.c_str(), nullptr);
    subscription->set_type(JSONMessage::kPersistent);
    chain_.requestCallbacks->SendRequest(std::move(subscription), nullptr, 0);
}

}  // namespace KXP
