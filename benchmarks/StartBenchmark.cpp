// What a client and a page wait for that asks for little. A start: the plug-in is loaded into a fresh process
// and started on an empty gallery; the targets are 20 libraries, 12 MiB resident and 3 ms. A round trip of
// GetSettings through the whole product, from the entry call to the callback; the targets are 9 us median and
// 6 system calls, which "strace -f -c" counts with this row alone.
#include <atomic>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include "benchmarks/Times.h"
#include "core/container/cef/ZvCefPlugin.h"
#include "tests/support/TempGallery.h"

namespace {

using namespace benchmarks;

struct Started {
    unsigned long atLoad = 0;
    unsigned long afterStart = 0;
    double milliseconds = 0;
    unsigned long residentKib = 0;
};

Started StartFresh() {
    const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(FRESH_START " " PRODUCT_PLUGIN, "r"), &pclose);
    Started started;
    if (!output || std::fscanf(output.get(), "%lu %lu %lf %lu", &started.atLoad, &started.afterStart,
                               &started.milliseconds, &started.residentKib) != 4)
        throw std::runtime_error("the plug-in does not start");
    return started;
}

void FreshStart(benchmark::State& state) {
    const TempGallery gallery;
    std::vector<double> times;
    Started last;
    while (state.KeepRunning()) {
        last = StartFresh();
        times.push_back(last.milliseconds);
        state.SetIterationTime(last.milliseconds / 1000);
    }
    state.counters["libraries_at_load"] = static_cast<double>(last.atLoad);
    state.counters["libraries"] = static_cast<double>(last.afterStart);
    state.counters["resident_mib"] = static_cast<double>(last.residentKib) / 1024;
    state.counters["median_ms"] = Median(times);
}
BENCHMARK(FreshStart)->Iterations(21)->UseManualTime()->Unit(benchmark::kMillisecond);

// One request at a time. It waits for the answer without a system call, which would be counted.
class Container {
  public:
    Container() {
        void* const library = dlopen(PRODUCT_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        if (!library) throw std::runtime_error(dlerror());
        plugin_ = reinterpret_cast<ZvCefPluginGetInfoFn>(dlsym(library, "ZvCefPluginGetInfo"))();
        plugin_->Initialize(&Container::Callback, "{}", this);
        Await(commands_, 1);
        plugin_->Start();
        Await(commands_, 2);
    }
    ~Container() {
        plugin_->Stop();
        plugin_->Uninitialize();
    }
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;

    void Ask(const std::string& request) {
        const int answered = messages_;
        plugin_->OnJsonMessage(request.c_str());
        Await(messages_, answered + 1);
    }

  private:
    static void Callback(ZvCefPluginNotification_t notification, const char*, void* context) {
        auto* self = static_cast<Container*>(context);
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

void SettingsRoundTrip(benchmark::State& state) {
    const TempGallery gallery;
    Container container;
    const std::string request =
        R"({"system":"CobalixNative","module":"Gallery","source_system":"Web","source_module":"Page",)"
        R"("uniqueid":"0B0CF5D2-3A21-4C0C-8E5F-0F2A6E9C1D11","type":3072,"method":"GetSettings",)"
        R"("payload":{}})";
    std::vector<double> times;
    while (state.KeepRunning())
        times.push_back(SecondsOf([&] { container.Ask(request); }) * 1e6);
    state.counters["median_us"] = Median(times);
    state.counters["p99_us"] = Quantile(times, 0.99);
}
BENCHMARK(SettingsRoundTrip)->Iterations(20000)->UseRealTime();

}  // namespace
