// How long a page waits after a restart for a thumbnail that was made before: the whole request, the first to
// a plug-in that has just started, beside a bare read of the stored file. In turn, in one run. The target for
// "wait_ms": 1.5. "drawn_ms" is what the page waited when the thumbnail was made.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <benchmark/benchmark.h>

#include "benchmarks/Product.h"
#include "benchmarks/Times.h"
#include "sample-captures/PngImage.h"
#include "tests/support/TempGallery.h"

namespace {

using namespace benchmarks;

std::string OnlyFileIn(const std::string& folder) {
    return std::filesystem::directory_iterator(folder)->path();
}

void BareRead(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    benchmark::DoNotOptimize(bytes.data());
}

void StoredThumbnail(benchmark::State& state) {
    const TempGallery gallery;
    const std::string path =
        gallery.Add("Game/a.png", samples::PngImage(3840, 2160, {{255, 0, 0}, {0, 128, 255}}));
    const std::string payload = "{" + Quoted("file", path) + R"(,"width":320,"height":180})";
    const double drawn = Product(PRODUCT_PLUGIN).Ask("GetThumbnail", payload);
    const std::string stored = OnlyFileIn(gallery.home() / "cache/ZORVEX/OvirastreamX/Thumbnails");
    Paired times;
    while (state.KeepRunning()) {
        // A start without a record says when it is done.
        std::filesystem::remove(gallery.home() / gallery.ShareFile("UGCTracker.json"));
        Product product(PRODUCT_PLUGIN);
        times.Floor([&] { BareRead(stored); });
        times.Product([&] { product.Ask("GetThumbnail", payload); });
        state.SetIterationTime(times.lastSeconds());
    }
    times.Report(state);
    state.counters["drawn_ms"] = drawn;
}
BENCHMARK(StoredThumbnail)->Iterations(31)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
