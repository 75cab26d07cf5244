// What cutting 5 s out of a video costs compared with what is unavoidable: the copy of as many bytes, made
// durable. The target is 8 ms of work beyond (Trim over DurableCopy, by their CPU times in one run, as the
// disk's own differ from time to time), the same for 10 s, 60 s and 300 MB of source, with the same memory:
// "peak_MiB" is what the process had at most above its start.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "benchmarks/PeakMemory.h"
#include "sample-media/MadeMedia.h"
#include "tests/support/TempFolder.h"
#include "tests/unit/ovnx-codelib/CodecLibrary.h"

namespace {

constexpr double kStart = 3.5;
constexpr double kEnd = 8.5;

// So many seconds of full-HD video at 40 Mbit/s, with sound.
const std::string& Capture(int seconds) {
    static std::map<int, std::string> captures;
    std::string& path = captures[seconds];
    if (!path.empty()) return path;
    made::Video video;
    video.width = 1920;
    video.height = 1080;
    video.bitRate = 40000000;
    video.repeat = seconds / 2;
    return path = made::Path(video);
}

void Expect(bool good) {
    if (!good) throw std::runtime_error("cannot copy");
}

void DurableCopy(const std::string& from, size_t size, const std::string& folder) {
    static std::vector<char> buffer(1 << 20);
    const int input = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    const std::string temporary = folder + "/.copy";
    const int output = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    Expect(input >= 0 && output >= 0);
    for (size_t done = 0; done < size;) {
        const ssize_t got =
            pread(input, buffer.data(), std::min(buffer.size(), size - done), static_cast<off_t>(done));
        Expect(got > 0 && write(output, buffer.data(), static_cast<size_t>(got)) == got);
        done += static_cast<size_t>(got);
    }
    const int directory = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    Expect(fsync(output) == 0 && rename(temporary.c_str(), (folder + "/copy").c_str()) == 0 &&
           fsync(directory) == 0);
    for (const int each : {input, output, directory})
        close(each);
}

void Trim(benchmark::State& state) {
    const TempFolder folder;
    const CodecLibrary library;
    const std::string& source = Capture(static_cast<int>(state.range(0)));
    const std::string clip = folder / "clip.mp4";
    state.counters["peak_MiB"] =
        benchmarks::PeakOf([&] { Expect(library.Remux(source, clip, kStart, kEnd) == 0); });
    while (state.KeepRunning())
        Expect(library.Remux(source, clip, kStart, kEnd) == 0);
    state.counters["clip_MB"] = static_cast<double>(std::filesystem::file_size(clip)) / 1e6;
    state.counters["source_MB"] = static_cast<double>(std::filesystem::file_size(source)) / 1e6;
}
BENCHMARK(Trim)->Arg(10)->Arg(60)->Unit(benchmark::kMillisecond);

void DurableCopyOfClip(benchmark::State& state) {
    const TempFolder folder;
    const std::string& source = Capture(60);
    const std::string clip = folder / "clip.mp4";
    Expect(CodecLibrary().Remux(source, clip, kStart, kEnd) == 0);
    const size_t size = std::filesystem::file_size(clip);
    while (state.KeepRunning())
        DurableCopy(source, size, folder.path());
}
BENCHMARK(DurableCopyOfClip)->Unit(benchmark::kMillisecond);

}  // namespace
