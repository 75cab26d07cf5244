// How long an import takes beside what is unavoidable: a copy of the same files, made durable. Both in turn,
// in one run, by the clock. The targets for "ratio": 1.25 for pictures and 1.43 for a video, which is 0.8 and
// 0.7 of the copy's speed; for "peak_MB", the most memory that the import had, 64. With GALLERY_BENCH_FULL
// set there are 4 GB of pictures and a video of 10 GB, else a fifth and a tenth of that.
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "benchmarks/Times.h"
#include "sample-captures/PngImage.h"
#include "sample-media/MadeMedia.h"
#include "tests/support/TemporaryHome.h"

namespace {

using namespace benchmarks;
namespace fs = std::filesystem;

constexpr int kRounds = 3;
constexpr std::chrono::milliseconds kBetweenLooks{5};
constexpr int kSecondsOf10Gb = 2000;  // at 40 Mbit/s
constexpr int kLoopSeconds = 2;

// A recording of an hour and a quarter has 340,000 packets.
constexpr int kLongSeconds = 4400;

bool IsFull() {
    return std::getenv("GALLERY_BENCH_FULL") != nullptr;
}

void WritePictures(const std::string& folder) {
    uint32_t noise = 1;
    samples::Picture picture{1180, 1180, std::vector<samples::Rgb>(size_t{1180} * 1180)};
    const auto next = [&] { return static_cast<uint8_t>((noise = noise * 1664525u + 1013904223u) >> 24); };
    for (samples::Rgb& pixel : picture.pixels)
        pixel = {next(), next(), next()};
    std::string bytes = samples::PngImage(picture);
    for (int i = 0; i < (IsFull() ? 1000 : 200); ++i) {
        // Another picture, as one is imported once.
        const std::string number = std::to_string(i);
        bytes.replace(bytes.size() / 2, number.size(), number);
        std::ofstream(folder + "/" + number + ".png", std::ios::binary) << bytes;
    }
}

void WriteRecording(const std::string& folder, int seconds, bool isSmall) {
    made::Video video;
    video.width = isSmall ? 64 : 1920;
    video.height = isSmall ? 64 : 1080;
    video.bitRate = isSmall ? 0 : 40000000;
    video.repeat = seconds / kLoopSeconds;
    video.format = "matroska";
    made::Write(video, folder + "/recording.mkv");
}

// In KiB; 0 of a process that has ended.
double PeakOf(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(file, line);)
        if (line.rfind("VmHWM:", 0) == 0) return std::stod(line.substr(6));
    return 0;
}

// Returns the most memory that it had, in MB. The usage that a wait reports begins with that of this process.
double RunImport(const std::string& folder) {
    const char* const arguments[] = {GALLERY_HOST, "import", "--app", "Tide", folder.c_str(), nullptr};
    pid_t child = 0;
    if (posix_spawn(&child, arguments[0], nullptr, nullptr, const_cast<char**>(arguments), environ) != 0)
        throw std::runtime_error(GALLERY_HOST);
    double peak = 0;
    int status = 0;
    for (pid_t ended = 0; ended == 0; ended = waitpid(child, &status, WNOHANG)) {
        std::this_thread::sleep_for(kBetweenLooks);
        peak = std::max(peak, PeakOf(child));
    }
    if (status != 0) throw std::runtime_error("import");
    return peak * 1024 / 1e6;
}

void Copy(const std::string& from, const std::string& to) {
    if (std::system(("cp -r '" + from + "' '" + to + "' && sync -f '" + to + "'").c_str()) != 0)
        throw std::runtime_error("cp");
}

template <typename Make>
void Import(benchmark::State& state, const Make& make) {
    const TemporaryHome home;
    const std::string source = home.folder().MakeFolder("source");
    make(source);
    sync();
    Paired times;
    double peak = 0;
    while (state.KeepRunning()) {
        times.Floor([&] { Copy(source, home / "copy"); });
        fs::remove_all(home / "copy");
        sync();
        times.Product([&] { peak = std::max(peak, RunImport(source)); });
        for (const char* const made : {"Videos", "data"})
            fs::remove_all(home / made);
        sync();
        state.SetIterationTime(times.lastSeconds());
    }
    times.Report(state);
    state.counters["peak_MB"] = peak;
}

void ImportPictures(benchmark::State& state) {
    Import(state, WritePictures);
}
void ImportVideo(benchmark::State& state) {
    Import(state, [](const std::string& folder) {
        WriteRecording(folder, IsFull() ? kSecondsOf10Gb : kSecondsOf10Gb / 10, false);
    });
}
void ImportLongVideo(benchmark::State& state) {
    Import(state, [](const std::string& folder) { WriteRecording(folder, kLongSeconds, true); });
}
BENCHMARK(ImportPictures)->Iterations(kRounds)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ImportVideo)->Iterations(kRounds)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ImportLongVideo)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
