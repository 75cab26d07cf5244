// What a page waits for when it asks for all captures of all games: the whole request, from the message to
// the answer, beside a bare program that asks for the state of each file once and copies the answer's text.
// The target for 10,000 captures is 60 ms ("wait_ms").
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <sys/stat.h>

#include "benchmarks/Product.h"
#include "benchmarks/Times.h"
#include "tests/support/TempGallery.h"

namespace {

using namespace benchmarks;

void AllRecentCaptures(benchmark::State& state) {
    const TempGallery gallery;
    const std::string highlight =
        R"({"ShortName":"app","HighlightName":"Victory","HighlightGroupId":"group"})";
    std::vector<std::string> paths;
    for (int i = 0; i < state.range(0); ++i) {
        const std::string name = "Game " + std::to_string(i / 200) + "/capture " + std::to_string(i);
        paths.push_back(i % 2 == 0 ? gallery.AddImage(name + ".png")
                                   : gallery.AddHighlight(name + ".mp4", highlight));
    }
    Product product(PRODUCT_PLUGIN);
    const std::string payload = R"({"count":1000000})";
    product.Ask("GetRecentUGC", payload);
    Paired times;
    while (state.KeepRunning()) {
        times.Floor([&] {
            struct stat status {};
            for (const std::string& path : paths)
                benchmark::DoNotOptimize(lstat(path.c_str(), &status));
            const std::string text = product.answer();
            benchmark::DoNotOptimize(text.data());
        });
        times.Product([&] { product.Ask("GetRecentUGC", payload); });
        state.SetIterationTime(times.lastSeconds());
    }
    times.Report(state);
}
BENCHMARK(AllRecentCaptures)
    ->ArgName("captures")
    ->Arg(1000)
    ->Arg(10000)
    ->Iterations(9)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
