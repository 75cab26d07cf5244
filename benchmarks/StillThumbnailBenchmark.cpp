// What a thumbnail of a screenshot of 3840 x 2160 costs compared with the bare calls into the library that
// decodes it: libpng row by row into a box average, and TurboJPEG reduced by 8. The target is 1.15 times
// these (the counter "cpu_ratio"), of one run, and at most 30 MiB more memory ("more_MiB").
#include <cstdio>
#include <functional>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "OvnxMedia.h"
#include "benchmarks/BareStills.h"
#include "benchmarks/Times.h"

namespace {

using namespace benchmarks;

void Thumbnail(FILE* file) {
    const OvnxMediaRequest request{kWidth / kBox, kHeight / kBox, nullptr, nullptr, nullptr, 0};
    OvnxMediaPicture picture{};
    if (OvnxMediaStillThumbnail(fileno(file), &request, &picture) != OVNX_MEDIA_OK)
        throw std::runtime_error("no thumbnail");
    benchmark::DoNotOptimize(picture.bytes);
    OvnxMediaRelease(&picture);
}

// The most memory that the work needs, in a process of its own.
double PeakMiB(const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

void Compare(benchmark::State& state, const File& file, void (*bare)(FILE*)) {
    const double more = PeakMiB([&] { Thumbnail(file.get()); }) - PeakMiB([&] { bare(file.get()); });
    Paired times;
    while (state.KeepRunning()) {
        times.Floor([&] { bare(file.get()); });
        times.Product([&] { Thumbnail(file.get()); });
        state.SetIterationTime(times.lastSeconds());
    }
    times.Report(state);
    state.counters["more_MiB"] = more;
}

void StillThumbnailOfPng(benchmark::State& state) {
    Compare(state, FileOf(PngOf4K()), BarePng);
}
void StillThumbnailOfJpeg(benchmark::State& state) {
    Compare(state, FileOf(JpegOf4K()), BareJpeg);
}
BENCHMARK(StillThumbnailOfPng)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(StillThumbnailOfJpeg)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
