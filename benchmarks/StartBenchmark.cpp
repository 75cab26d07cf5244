// What a client and a page wait for that asks for little. A start: the plug-in is loaded into a fresh process
// and started on an empty gallery; the targets are 20 libraries, 12 MiB resident and 3 ms. A round trip of
// GetSettings through the whole product, from the entry call to the callback; the targets are 9 us median and
// 6 system calls, which counted_calls has counted.
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "benchmarks/SpinningContainer.h"
#include "benchmarks/Times.h"
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

void SettingsRoundTrip(benchmark::State& state) {
    const TempGallery gallery;
    SpinningContainer container(PRODUCT_PLUGIN);
    container.LetSettingsAge();
    std::vector<double> times;
    while (state.KeepRunning())
        times.push_back(SecondsOf([&] { container.Ask("GetSettings"); }) * 1e6);
    state.counters["median_us"] = Median(times);
    state.counters["p99_us"] = Quantile(times, 0.99);
}
BENCHMARK(SettingsRoundTrip)->Iterations(20000)->UseRealTime();

}  // namespace
