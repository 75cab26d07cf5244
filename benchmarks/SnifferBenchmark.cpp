// What the ownership test costs compared with what is unavoidable: opening each file, one read and the
// closing. The target for a folder scan is 1.3 times that floor (SniffFolder over FloorOfFolder, of one run).
#include <benchmark/benchmark.h>

#include "benchmarks/CaptureFolder.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"

namespace {

using namespace benchmarks;

constexpr int kFolderFiles = 10000;

// Made once for both benchmarks, so that they see the same files.
const Folder& MixedFolder() {
    static const Folder folder(0, 1, kFolderFiles);
    return folder;
}

bool SniffOne(const std::string& path) {
    media::SniffResult result;
    benchmark::DoNotOptimize(media::SniffFile(path, result));
    return result.isOwn;
}

void SniffFile(benchmark::State& state) {
    const int kind = static_cast<int>(state.range(0));
    const Folder folder(kind, 0, 1);
    const std::string& path = folder.files().front();
    if (SniffOne(path) != (kind < kExr)) state.SkipWithError("not judged as made");
    while (state.KeepRunning())
        SniffOne(path);
    state.SetLabel(kLabels[kind]);
}
BENCHMARK(SniffFile)->DenseRange(0, kKinds - 1);

void FloorOfFile(benchmark::State& state) {
    const Folder folder(kPng, 0, 1);
    while (state.KeepRunning())
        OpenReadClose(folder.files().front());
}
BENCHMARK(FloorOfFile);

void FloorOfFolder(benchmark::State& state) {
    const std::vector<std::string>& files = MixedFolder().files();
    while (state.KeepRunning())
        for (const std::string& path : files)
            OpenReadClose(path);
    state.SetItemsProcessed(state.iterations() * kFolderFiles);
}
BENCHMARK(FloorOfFolder)->Unit(benchmark::kMillisecond);

void SniffFolder(benchmark::State& state) {
    const std::vector<std::string>& files = MixedFolder().files();
    while (state.KeepRunning())
        for (const std::string& path : files)
            SniffOne(path);
    state.SetItemsProcessed(state.iterations() * kFolderFiles);
}
BENCHMARK(SniffFolder)->Unit(benchmark::kMillisecond);

}  // namespace
