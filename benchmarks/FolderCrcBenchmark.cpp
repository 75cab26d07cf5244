// What the sum over a tree of folders costs compared with what is unavoidable: reading the folders and asking
// for the time of each entry. The target is 1.1 times that floor (the counter "ratio").
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <dirent.h>
#include <sys/stat.h>

#include "CobalixUtil.h"
#include "plugin-modules/Gallery/src/media/FolderCrc.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kFilesPerGame = 200;

// A gallery: folders of games with captures in them, `entries` files in all.
class Tree {
  public:
    explicit Tree(int entries) {
        std::string name = (fs::temp_directory_path() / "gallery-benchmark-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
        path_ = name;
        fs::path game;
        for (int i = 0; i < entries; ++i) {
            if (i % kFilesPerGame == 0) {
                game = path_ / ("Game " + std::to_string(i / kFilesPerGame));
                fs::create_directory(game);
            }
            std::ofstream(game / ("Desktop 2026-03-14 capture " + std::to_string(i) + ".png")).flush();
        }
    }
    ~Tree() { fs::remove_all(path_); }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    std::string path() const { return path_.string(); }

  private:
    fs::path path_;
};

// The floor. Returns the sum of the times, so that nothing is optimised away.
int64_t ReadAndStat(const std::string& path) {
    int64_t sum = 0;
    std::vector<std::string> folders;
    DIR* folder = opendir(path.c_str());
    while (const dirent* entry = readdir(folder)) {
        struct stat status {};
        fstatat(dirfd(folder), entry->d_name, &status, 0);
        sum += status.st_mtime;
        if (entry->d_type == DT_DIR && entry->d_name[0] != '.') folders.push_back(path + "/" + entry->d_name);
    }
    closedir(folder);
    for (const std::string& inner : folders)
        sum += ReadAndStat(inner);
    return sum;
}

double Median(std::vector<double> seconds) {
    const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
    std::nth_element(seconds.begin(), middle, seconds.end());
    return *middle;
}

template <typename Work>
double SecondsOf(Work work) {
    const Clock::time_point start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// The two take turns, so that both see the same machine.
void FolderCrc(benchmark::State& state) {
    KXP::LogInit(
        KXP::LocalApp, [](const char*, void*) {}, nullptr);
    const Tree tree(static_cast<int>(state.range(0)));
    std::vector<double> floors;
    std::vector<double> sums;
    unsigned int crc = 0;
    while (state.KeepRunning()) {
        floors.push_back(SecondsOf([&] { benchmark::DoNotOptimize(ReadAndStat(tree.path())); }));
        sums.push_back(SecondsOf([&] { media::CalculateFolderCRC(tree.path(), "", crc); }));
        state.SetIterationTime(sums.back());
    }
    if (crc == 0) state.SkipWithError("not summed");
    state.counters["floor_ms"] = Median(floors) * 1000;
    state.counters["ratio"] = Median(sums) / Median(floors);
    KXP::LogInit(KXP::LocalApp, nullptr, nullptr);
}
BENCHMARK(FolderCrc)->Arg(1000)->Arg(10000)->Arg(100000)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
