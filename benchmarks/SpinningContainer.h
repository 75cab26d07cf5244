// The plug-in in a container that waits without a system call: a wait that sleeps would be counted and timed
// with the request.
#pragma once

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

#include <dlfcn.h>

#include "core/container/cef/ZvCefPlugin.h"

namespace benchmarks {

// A container that has one request at a time under way.
class SpinningContainer {
  public:
    explicit SpinningContainer(const char* plugin) {
        void* const library = dlopen(plugin, RTLD_NOW | RTLD_LOCAL);
        if (!library) throw std::runtime_error(dlerror());
        plugin_ = reinterpret_cast<ZvCefPluginGetInfoFn>(dlsym(library, "ZvCefPluginGetInfo"))();
        plugin_->Initialize(&SpinningContainer::Callback, "{}", this);
        Await(commands_, 1);
        plugin_->Start();
        Await(commands_, 2);
    }
    ~SpinningContainer() {
        plugin_->Stop();
        plugin_->Uninitialize();
    }
    SpinningContainer(const SpinningContainer&) = delete;
    SpinningContainer& operator=(const SpinningContainer&) = delete;

    void Ask(const std::string& method) {
        const std::string request =
            R"({"system":"CobalixNative","module":"Gallery","source_system":"Web","source_module":"Page",)"
            R"("uniqueid":"0B0CF5D2-3A21-4C0C-8E5F-0F2A6E9C1D11","type":3072,"method":")" +
            method + R"(","payload":{}})";
        const int answered = messages_;
        plugin_->OnJsonMessage(request.c_str());
        Await(messages_, answered + 1);
    }

    // The start has written the settings file, which is read for each request while it is as young as that.
    static void LetSettingsAge() { std::this_thread::sleep_for(std::chrono::milliseconds(300)); }

  private:
    static void Callback(ZvCefPluginNotification_t notification, const char*, void* context) {
        auto* self = static_cast<SpinningContainer*>(context);
        if (notification == ZvCefPluginCommandSucceeded) ++self->commands_;
        if (notification == ZvCefPluginJsonMessage) ++self->messages_;
    }
    static void Await(const std::atomic<int>& count, int wanted) {
        while (count < wanted) {
        }
    }

    ZvCefPluginInfo* plugin_ = nullptr;
    std::atomic<int> commands_{0};
    std::atomic<int> messages_{0};
};

}  // namespace benchmarks
