// What a page waits for when it asks for the listing of a folder: the whole request, from the message to the
// answer, beside a bare walk that opens each file that may be a capture and reads 512 bytes of it. In turn,
// in one run. The targets for 10,000 files: 1.25 times the floor by processor time ("cpu_ratio") and 0.9
// times by the clock ("ratio") where two processors are free.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "benchmarks/CaptureFolder.h"
#include "benchmarks/Product.h"
#include "benchmarks/Times.h"
#include "tests/support/TempGallery.h"

namespace {

using namespace benchmarks;

// The time and the first bytes of a file; nothing by a whole path.
int64_t Look(int folder, const char* name) {
    struct stat status {};
    char start[512];
    const int file = openat(folder, name, O_RDONLY | O_CLOEXEC);
    fstat(file, &status);
    benchmark::DoNotOptimize(read(file, start, sizeof start));
    close(file);
    return status.st_mtime;
}

void BareListing(const std::string& path) {
    std::vector<std::pair<int64_t, std::string>> files;
    DIR* entries = opendir(path.c_str());
    while (const dirent* entry = readdir(entries))
        if (entry->d_type == DT_REG) files.emplace_back(Look(dirfd(entries), entry->d_name), entry->d_name);
    closedir(entries);
    std::sort(files.begin(), files.end());
    std::string text;
    for (const auto& [time, name] : files)
        text += R"({"name":")" + name + R"(","type":"image","subtype":"Normal","source":"OVS_Share"},)";
    benchmark::DoNotOptimize(text.data());
}

void WholeListing(benchmark::State& state) {
    const TempGallery gallery;
    const Folder folder(0, 1, static_cast<int>(state.range(0)));
    Product product(PRODUCT_PLUGIN);
    const std::string payload = "{" + Quoted("directory", folder.path()) + "}";
    Paired times;
    product.Ask("GetFolderListing", payload);
    while (state.KeepRunning()) {
        times.Floor([&] { BareListing(folder.path()); });
        times.Product([&] { product.Ask("GetFolderListing", payload); });
        state.SetIterationTime(times.lastSeconds());
    }
    times.Report(state);
}
// More often for the short one: medians of nine requests differ by a tenth from run to run.
BENCHMARK(WholeListing)
    ->ArgName("files")
    ->Arg(1000)
    ->Iterations(90)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(WholeListing)
    ->ArgName("files")
    ->Arg(10000)
    ->Arg(100000)
    ->Iterations(9)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
