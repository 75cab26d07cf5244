// What a thumbnail of a screenshot of 3840 x 2160 costs compared with the bare calls into the library that
// decodes it: libpng row by row into a box average, and TurboJPEG reduced by 8. The target is 1.15 times
// these (the counter "ratio"), of one run, and at most 30 MiB more memory ("more_MiB").
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <png.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <turbojpeg.h>
#include <unistd.h>

#include "OvnxMedia.h"
#include "sample-media/StillFiles.h"

namespace {

constexpr uint32_t kWidth = 3840;
constexpr uint32_t kHeight = 2160;
constexpr uint32_t kBox = 12;

std::array<uint8_t, 3> ColourAt(uint32_t x, uint32_t y) {
    thread_local std::mt19937 random(1);
    const auto noisy = [noise = random()](uint32_t level, unsigned shift) {
        return static_cast<uint8_t>(level + (noise >> shift) % 16);
    };
    return {noisy(x / 17, 0), noisy(y / 10, 8), noisy((x + y) / 27, 16)};
}

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

File FileOf(const std::string& bytes) {
    File file(std::tmpfile(), std::fclose);
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size())
        throw std::runtime_error("no temporary file");
    std::fflush(file.get());
    return file;
}

File PngFile() {
    return FileOf(stillfiles::Png(kWidth, kHeight, {}, [](uint32_t x, uint32_t y) {
        const auto colour = ColourAt(x, y);
        return std::array<uint16_t, 4>{colour[0], colour[1], colour[2]};
    }));
}

File JpegFile() {
    return FileOf(stillfiles::Jpeg(kWidth, kHeight, TJSAMP_420, 0, [](int x, int y) {
        return ColourAt(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
    }));
}

void BarePng(FILE* file) {
    std::rewind(file);
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_read_info(png, info);
    std::vector<uint8_t> row(png_get_rowbytes(png, info));
    std::vector<uint32_t> sums(size_t{kWidth / kBox} * 3);
    std::vector<uint8_t> result;
    for (uint32_t y = 0; y < kHeight; ++y) {
        png_read_row(png, row.data(), nullptr);
        for (size_t box = 0; box < kWidth / kBox; ++box) {
            for (size_t i = 0; i < size_t{kBox} * 3; i += 3) {
                for (size_t c = 0; c < 3; ++c)
                    sums[box * 3 + c] += row[box * kBox * 3 + i + c];
            }
        }
        if (y % kBox + 1 < kBox) continue;
        for (uint32_t& sum : sums)
            result.push_back(static_cast<uint8_t>(std::exchange(sum, 0) / (kBox * kBox)));
    }
    png_destroy_read_struct(&png, &info, nullptr);
    benchmark::DoNotOptimize(result.data());
}

void BareJpeg(FILE* file) {
    std::fseek(file, 0, SEEK_END);
    std::vector<uint8_t> bytes(static_cast<size_t>(std::ftell(file)));
    std::rewind(file);
    if (std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size()) throw std::runtime_error("not read");
    std::vector<uint8_t> samples(size_t{kWidth / 8} * (kHeight / 8) * 3);
    tjhandle decoder = tjInitDecompress();
    if (tjDecompress2(decoder, bytes.data(), bytes.size(), samples.data(), kWidth / 8, 0, kHeight / 8,
                      TJPF_RGB, 0) != 0)
        throw std::runtime_error("not decoded");
    tjDestroy(decoder);
    benchmark::DoNotOptimize(samples.data());
}

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

double CpuSecondsOf(void (*work)(FILE*), FILE* file) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const double start = now();
    work(file);
    return now() - start;
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The two take turns, so that both see the same machine; neither starts threads.
void Compare(benchmark::State& state, const File& file, void (*bare)(FILE*)) {
    const double more = PeakMiB([&] { Thumbnail(file.get()); }) - PeakMiB([&] { bare(file.get()); });
    std::vector<double> floors;
    std::vector<double> thumbnails;
    while (state.KeepRunning()) {
        floors.push_back(CpuSecondsOf(bare, file.get()));
        thumbnails.push_back(CpuSecondsOf(Thumbnail, file.get()));
        state.SetIterationTime(thumbnails.back());
    }
    state.counters["floor_ms"] = Median(floors) * 1000;
    state.counters["ratio"] = Median(thumbnails) / Median(floors);
    state.counters["more_MiB"] = more;
}

void StillThumbnailOfPng(benchmark::State& state) {
    Compare(state, PngFile(), BarePng);
}
void StillThumbnailOfJpeg(benchmark::State& state) {
    Compare(state, JpegFile(), BareJpeg);
}
BENCHMARK(StillThumbnailOfPng)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(StillThumbnailOfJpeg)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
