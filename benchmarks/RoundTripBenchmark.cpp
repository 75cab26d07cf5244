// A request through the whole chain, from the entry call to the callback, checked against the catalogue both
// ways. The targets: 25 us median for one that the worker answers, 75 us for one with a task of its own.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "common/json/JsonHelpers.h"
#include "common/plugincommon/JsonResponseAsync.h"
#include "core/container/cef/ZvCefPlugin.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"

namespace {

using KXP::JSONMessage;
using KXP::RetVal;
using KXP::Value;

class TaskOfItsOwn : public KXP::JsonResponseAsync<TaskOfItsOwn> {
  public:
    using JsonResponseAsync::JsonResponseAsync;
    RetVal ExecuteAsync(const Value& payload) override {
        directory_ = KXP::jsonGetValue<std::string>(payload, "directory");
        return {};
    }
    void FinishAsync(Value& result, KXP::Allocator& allocator) override {
        result.AddMember("crc", static_cast<int>(directory_.size()), allocator);
    }

  private:
    std::string directory_;
};

class Module : public KXP::PluginModuleBase {
  public:
    Module() : PluginModuleBase("CobalixNative", "Gallery", ApiCatalogueText()) {}
    using PluginModuleBase::Initialize;
    bool Initialize() override {
        RegisterSyncMethod("GetHighlightsCount", this, &Module::Count);
        RegisterAsyncTask("GetFolderCRC", &TaskOfItsOwn::Launch);
        return true;
    }
    RetVal Count(std::unique_ptr<JSONMessage>, Value& result, KXP::Allocator& allocator) {
        result.AddMember("count", 3, allocator);
        return {};
    }
};

// The container's side: a request at a time, and the wait for its answer without a sleep of its own.
class Container {
  public:
    Container() {
        plugin_.Initialize(&Container::Callback, "{}", this);
        Wait();
        plugin_.Start();
        Wait();
    }
    ~Container() { plugin_.Uninitialize(); }
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;

    void Ask(const std::string& request) {
        plugin_.OnJsonMessage(request.c_str());
        Wait();
    }

  private:
    static void Callback(ZvCefPluginNotification_t notification, const char*, void* context) {
        if (notification != ZvCefPluginLog) ++static_cast<Container*>(context)->told_;
    }
    void Wait() {
        ++expected_;
        while (told_.load(std::memory_order_acquire) < expected_)
            std::this_thread::yield();
    }

    ZvCefPluginInfo& plugin_ = *ZvCefPluginGetInfo();
    std::atomic<int> told_{0};
    int expected_ = 0;
};

std::string Request(const std::string& method, const std::string& payload) {
    return R"({"system":"CobalixNative","module":"Gallery","source_system":"Web","source_module":"Page",)"
           R"("uniqueid":"0B0CF5D2-3A21-4C0C-8E5F-0F2A6E9C1D11","type":3072,"method":")" +
           method + R"(","payload":)" + payload + "}";
}

const std::string kCount =
    Request("GetHighlightsCount",
            R"({"app":{"name":"A game","appShortName":"game"},"group":{"groupId":"g","tags":1}})");
const std::string kTask = Request("GetFolderCRC", R"({"directory":"/home/user/Videos"})");

size_t ResidentKb() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.compare(0, 6, "VmRSS:") == 0) return std::stoul(line.substr(6));
    return 0;
}

// Reports the median and the 99th percentile of single requests besides the mean.
void RoundTrip(benchmark::State& state, const std::string& request) {
    Container container;
    std::vector<double> times;
    while (state.KeepRunning()) {
        const auto start = std::chrono::steady_clock::now();
        container.Ask(request);
        times.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    state.counters["median_us"] = times[times.size() / 2];
    state.counters["p99_us"] = times[times.size() * 99 / 100];
}
BENCHMARK_CAPTURE(RoundTrip, OnTheWorker, kCount)->Iterations(20000)->UseRealTime();
BENCHMARK_CAPTURE(RoundTrip, WithATaskOfItsOwn, kTask)->Iterations(20000)->UseRealTime();

// Resident memory after 20,000 requests compared with that after the first 2,000.
void MemoryOfRequests(benchmark::State& state) {
    while (state.KeepRunning()) {
        Container container;
        const auto askMany = [&](int count) {
            for (int i = 0; i < count; ++i)
                container.Ask(i % 2 ? kCount : kTask);
            return ResidentKb();
        };
        const size_t early = askMany(2000);
        const size_t late = askMany(18000);
        state.counters["after_2000_kb"] = static_cast<double>(early);
        state.counters["after_20000_kb"] = static_cast<double>(late);
    }
}
BENCHMARK(MemoryOfRequests)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

KXP::IContainerConnector* KXP::IContainerConnector::CreatePluginInstance() {
    return PluginModuleBase::HandOver(std::make_shared<Module>());
}

void KXP::IContainerConnector::DestroyPluginInstance(IContainerConnector* instance) {
    PluginModuleBase::TakeBack(instance);
}
