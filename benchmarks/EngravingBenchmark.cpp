// What it costs to engrave a file of 300 MB, against the bare durable writes of as many bytes: one behind the
// file, and one over a header in it.
#include <chrono>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "plugin-modules/Gallery/src/engraving/Engraver.h"
#include "sample-captures/MediaBytes.h"
#include "tests/support/TempFolder.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kMediaBytes = 300 << 20;
// What an hour of video needs.
constexpr size_t kTrackBytes = 1 << 20;

std::string Movie() {
    return samples::Mp4Box(
        "moov", samples::Mp4Box("mvhd", std::string(100, '\0')) +
                    samples::Mp4Box("trak", samples::Mp4Box("mdia", std::string(kTrackBytes, '\1'))));
}

// With the movie before or after the data.
std::string MakeFile(const TempFolder& folder, bool inFront) {
    const std::string path = folder / (inFront ? "front.mp4" : "behind.mp4");
    std::ofstream out(path, std::ios::binary);
    const std::vector<char> block(1 << 20, '\2');
    if (inFront) out << Movie();
    out << samples::U32(kMediaBytes + 8) << "mdat";
    for (size_t done = 0; done < kMediaBytes; done += block.size())
        out.write(block.data(), static_cast<std::streamsize>(block.size()));
    if (!inFront) out << Movie();
    out.close();
    const int fd = open(path.c_str(), O_RDWR);
    fsync(fd);
    close(fd);
    return path;
}

double Seconds(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double BareWrites(const std::string& path, size_t bytes) {
    const std::string text(bytes, '\3');
    const int fd = open(path.c_str(), O_RDWR);
    const off_t end = lseek(fd, 0, SEEK_END);
    const auto start = Clock::now();
    bool written = pwrite(fd, text.data(), bytes, end) == static_cast<ssize_t>(bytes) && fdatasync(fd) == 0;
    written = written && pwrite(fd, "free", 4, 4) == 4 && fdatasync(fd) == 0;
    const double took = Seconds(start);
    close(fd);
    return written ? took : -1;
}

void Engraving(benchmark::State& state) {
    const TempFolder folder;
    const std::string path = MakeFile(folder, state.range(0) != 0);
    const std::string bare = folder.Write("bare", "12345678");
    const auto info = std::make_unique<CaptureRequestInfo>();
    std::wcscpy(info->drsAppName, L"Application");
    double ours = 0;
    double floor = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const uintmax_t before = std::filesystem::file_size(path);
        state.ResumeTiming();
        const auto start = Clock::now();
        if (!AddMetadatatoFile(path, info.get())) state.SkipWithError("not engraved");
        const double took = Seconds(start);
        state.SetIterationTime(took);
        ours += took;
        floor += BareWrites(bare, std::filesystem::file_size(path) - before);
    }
    state.counters["of bare writes"] = ours / floor;
}
BENCHMARK(Engraving)
    ->ArgName("in front")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(5)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
