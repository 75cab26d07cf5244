// The entry calls of the library, and the translation of a plug-in's notifications for its container.

#include <memory>
#include <string>
#include <utility>

#include "CobalixUtil.h"
#include "common/plugincommon/IContainerConnector.h"
#include "common/plugincommon/PluginRegistry.h"
#include "common/product/Profile.h"
#include "common/results/Exception.h"
#include "core/container/cef/CefJsonReceiver.h"
#include "core/container/cef/ZvCefPlugin.h"

using KXP::IContainerConnector;
using KXP::JSONMessage;

namespace {

const std::string s_pluginName = KXP::GetLibraryName();
// The container keeps entry calls from overlapping, so these have no lock. Threads of the library reach the
// receiver through the chain and the log, both of which end before it does.
IContainerConnector* s_pCefPlugin = nullptr;
// Shared with the instance, which may be abandoned and then uses it longer.
std::shared_ptr<CefJsonReceiver> s_pCefJsonReceiver;
// Whether the instance was started at least once.
bool s_started = false;

void LogCallback(const char* line, void*) {
    s_pCefJsonReceiver->container().Call(ZvCefPluginLog, line);
}

int ContainerNotification(IContainerConnector::NotificationType type) {
    switch (static_cast<int>(type)) {
        case IContainerConnector::CommandFailed:
            return ZvCefPluginCommandFailed;
        case IContainerConnector::ContainerEvent:
            return ZvCefPluginContainerEvent;
        case IContainerConnector::ContainerMessage:
            return ZvCefPluginLog;
        default:
            KXP_LOG(KXP::LogFailure,
                    "Invalid IContainerConnector::NotificationType type for CEF container: %d",
                    static_cast<int>(type));
            return ZvCefPluginCommandFailed;
    }
}

void NotifyContainer(const ContainerCallback& callback, IContainerConnector::NotificationType type,
                     const JSONMessage& message) {
    const bool succeeded = type == IContainerConnector::CommandSucceeded;
    KXP::JsonBuffer buffer;
    if (!succeeded) message.Serialize(buffer);
    const char* const text = succeeded ? message.method() : buffer.GetString();
    const auto& owed = message.owed_answer();
    if (owed && !owed->Settle()) return;
    callback.Call(succeeded ? ZvCefPluginCommandSucceeded : ContainerNotification(type), text);
}

int MapResult(int result) {
    return result == IContainerConnector::Succeeded || result == IContainerConnector::Accepted
               ? result
               : IContainerConnector::Failed;
}

std::unique_ptr<JSONMessage> CreateCommand(const char* method, const char* payload = nullptr) {
    return KXP::Message::CreateRequest("", "", method, "", "", payload);
}

// A thread of ours cannot wait for its own end, and a call from inside the callback may be on one.
bool RefusedInsideCallback(const char* call) {
    if (!ContainerCallback::IsCallingThread()) return false;
    KXP_LOG(KXP::LogFailure, "%s must not be called from inside the callback", call);
    return true;
}

void TakeDown() {
    if (s_pCefPlugin) {
        KXP_LOG(KXP::LogTrace, "Uninitialize CefPlugin");
        std::shared_ptr<JSONMessage> message = CreateCommand("_CmdUninit_");
        KXP_LOG(KXP::LogMilestone, "Invoking Uninitialize() for plugin %s", s_pluginName.c_str());
        s_pCefJsonReceiver->open_requests().BeginEnd(s_started);
        s_pCefPlugin->Uninitialize(message);
        s_pCefJsonReceiver->open_requests().End();
        IContainerConnector::DestroyPluginInstance(s_pCefPlugin);
        s_pCefPlugin = nullptr;
        s_started = false;
    }
    KXP::LogInit(KXP::LocalApp, nullptr, nullptr);
    if (s_pCefJsonReceiver) s_pCefJsonReceiver->Close();
    s_pCefJsonReceiver.reset();
}

// Hands a command to the plug-in. Once that has accepted it, its end is notified, also when there is no
// memory for the plug-in's own answer.
template <typename Run>
int GiveCommand(std::unique_ptr<JSONMessage> message, const char* name, const Run& run) {
    s_pCefJsonReceiver->open_requests().AddCommand(*message);
    const std::shared_ptr<KXP::IOwedAnswer> owed = message->owed_answer();
    int result = IContainerConnector::Failed;
    KXP_LOG(KXP::LogMilestone, "Invoking %s() for plugin %s", name, s_pluginName.c_str());
    try {
        result = run(std::move(message));
    } catch (...) {
        (void)owed->Settle();  // the result of the call says it
        throw;
    }
    if (result != IContainerConnector::Accepted) (void)owed->Settle();
    return MapResult(result);
}

int BringUp(const char* configJson, void* context) {
    const std::string modules = KXP::PluginRegistry::Instance().GetModuleList();
    KXP_LOG(KXP::LogMilestone, "Creating Plugin instance %s for modules: %s", s_pluginName.c_str(),
            modules.c_str());
    s_pCefPlugin = IContainerConnector::CreatePluginInstance();
    if (!s_pCefPlugin) return 0;
    s_pCefPlugin->SetContainerCallback(
        [receiver = s_pCefJsonReceiver](IContainerConnector::NotificationType type,
                                        std::unique_ptr<JSONMessage> message,
                                        void*) { NotifyContainer(receiver->container(), type, *message); },
        context);
    KXP_LOG(KXP::LogTrace, "Initialize CefPlugin");
    return GiveCommand(CreateCommand("_CmdInit_", configJson), "Initialize", [](auto message) {
        return s_pCefPlugin->Initialize(s_pCefJsonReceiver.get(), std::move(message), nullptr);
    });
}

// Nothing is thrown towards the container. Inside a catch block.
void LogCaught(const char* command) noexcept {
    try {
        KXP_LOG(KXP::LogFailure, "Could not %s plugin %s: %s", command, s_pluginName.c_str(),
                KXP::ToStr(KXP::ExceptionToRetVal()).c_str());
    } catch (...) {
        KXP_LOG(KXP::LogFailure, "Could not %s plugin %s, and there is no memory to say why", command,
                s_pluginName.c_str());
    }
}

// False when there is no memory for it: the instance stays.
bool TryTakeDown() noexcept {
    try {
        TakeDown();
        return true;
    } catch (...) {
        LogCaught("uninitialize");
        return false;
    }
}

int CefPluginInitialize(ZvCefPluginCallback callback, const char* configJson, void* context) {
    if (RefusedInsideCallback("Initialize")) return 0;
    // An instance that was not uninitialized ends first: its threads still use its receiver.
    if (!TryTakeDown()) return 0;
    try {
        s_pCefJsonReceiver = std::make_shared<CefJsonReceiver>(callback, context);
        KXP::LogInit(KXP::LocalApp, LogCallback, nullptr);
        KXP::LogNameThread("cefclient", nullptr);
        return BringUp(configJson, context);
    } catch (...) {
        LogCaught("initialize");
    }
    (void)TryTakeDown();
    return 0;
}

// A lifecycle command of a running instance.
int Command(const char* method, const char* name,
            int (IContainerConnector::*command)(std::shared_ptr<JSONMessage>)) {
    if (!s_pCefPlugin) return 0;
    try {
        return GiveCommand(CreateCommand(method), name,
                           [command](auto message) { return (s_pCefPlugin->*command)(std::move(message)); });
    } catch (...) {
        LogCaught(name);
        return 0;
    }
}

int CefPluginStart() {
    if (s_pCefPlugin) s_started = true;
    return Command("_CmdStart_", "Start", &IContainerConnector::Start);
}

int CefPluginStop() {
    return Command("_CmdStop_", "Stop", &IContainerConnector::Stop);
}

int CefPluginSuspend() {
    if (s_pCefPlugin) KXP_LOG(KXP::LogFailure, "Suspend CefPlugin NOT IMPLEMENTED");
    return 0;
}

int CefPluginResume() {
    if (s_pCefPlugin) KXP_LOG(KXP::LogFailure, "Resume CefPlugin NOT IMPLEMENTED");
    return 0;
}

int CefPluginUninitialize() {
    if (!s_pCefPlugin || RefusedInsideCallback("Uninitialize")) return 0;
    return TryTakeDown() ? 1 : 0;
}

int CefPluginOnJsonMessage(const char* json) {
    if (!s_pCefJsonReceiver) return 0;
    s_pCefJsonReceiver->Receive(json);
    return 0;
}

ZvCefPluginInfo s_ZvCefPluginInfo = {
    1,
    nullptr,
    nullptr,
    CefPluginInitialize,
    CefPluginStart,
    CefPluginSuspend,
    CefPluginResume,
    CefPluginStop,
    CefPluginUninitialize,
    CefPluginOnJsonMessage,
};

}  // namespace

extern "C" ZvCefPluginInfo* ZvCefPluginGetInfo() {
    static const std::string modules = KXP::PluginRegistry::Instance().GetModuleList();
    if (!s_ZvCefPluginInfo.pluginName) s_ZvCefPluginInfo.pluginName = s_pluginName.c_str();
    if (!s_ZvCefPluginInfo.moduleList) s_ZvCefPluginInfo.moduleList = modules.c_str();
    return &s_ZvCefPluginInfo;
}
