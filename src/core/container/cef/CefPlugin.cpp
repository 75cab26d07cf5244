// The entry calls of the library, and the translation of a plug-in's notifications for its container.

#include <memory>
#include <new>
#include <string>

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
    if (type == IContainerConnector::CommandSucceeded) {
        callback.Call(ZvCefPluginCommandSucceeded, message.method());
        return;
    }
    KXP::JsonBuffer buffer;
    message.Serialize(buffer);
    callback.Call(ContainerNotification(type), buffer.GetString());
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
    auto message = CreateCommand("_CmdInit_", configJson);
    KXP_LOG(KXP::LogMilestone, "Invoking Initialize() for plugin %s", s_pluginName.c_str());
    return MapResult(s_pCefPlugin->Initialize(s_pCefJsonReceiver.get(), std::move(message), nullptr));
}

int CefPluginInitialize(ZvCefPluginCallback callback, const char* configJson, void* context) {
    if (RefusedInsideCallback("Initialize")) return 0;
    // An instance that was not uninitialized ends first: its threads still use its receiver.
    TakeDown();
    s_pCefJsonReceiver = std::make_shared<CefJsonReceiver>(callback, context);
    KXP::LogInit(KXP::LocalApp, LogCallback, nullptr);
    KXP::LogNameThread("cefclient", nullptr);
    try {
        return BringUp(configJson, context);
    } catch (...) {
        KXP_LOG(KXP::LogFailure, "Could not initialize plugin %s: %s", s_pluginName.c_str(),
                KXP::ToStr(KXP::ExceptionToRetVal()).c_str());
    }
    TakeDown();
    return 0;
}

// A lifecycle command of a running instance. Nothing is thrown towards the container.
int Command(const char* method, const char* name,
            int (IContainerConnector::*command)(std::shared_ptr<JSONMessage>)) {
    if (!s_pCefPlugin) return 0;
    try {
        std::shared_ptr<JSONMessage> message = CreateCommand(method);
        KXP_LOG(KXP::LogMilestone, "Invoking %s() for plugin %s", name, s_pluginName.c_str());
        return MapResult((s_pCefPlugin->*command)(std::move(message)));
    } catch (...) {
        KXP_LOG(KXP::LogFailure, "Could not %s plugin %s: %s", name, s_pluginName.c_str(),
                KXP::ToStr(KXP::ExceptionToRetVal()).c_str());
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
    try {
        TakeDown();
    } catch (const std::bad_alloc&) {
        KXP_LOG(KXP::LogFailure, "Could not uninitialize plugin %s: no memory", s_pluginName.c_str());
        return 0;
    }
    return 1;
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
