// What the tracker costs with galleries of 1,000 to 100,000 captures: queries, also during a storm of new
// files, and the removal of a game.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "benchmarks/SampleGallery.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

namespace {

using namespace benchmarks;

double ResidentMB() {
    std::ifstream statm("/proc/self/statm");
    double pages = 0;
    statm >> pages >> pages;
    return pages * 4096 / 1e6;
}

// New files come all at once while two questions are asked over and over; "longest_ms" is at most 20, where
// the machine lets a thread that only naps go on that soon.
void Storm(benchmark::State& state) {
    constexpr int kStorm = 20000;
    SampleGallery gallery;
    const int before = static_cast<int>(state.range(0));
    gallery.Fill(before);
    CountingHost host;
    const std::unique_ptr<UGCTracker> tracker = MakeTracker(host);
    WaitForWorker(*tracker);
    std::vector<double> queries;
    std::vector<double> naps;
    double grownMB = 0;
    while (state.KeepRunning()) {
        std::vector<std::string> paths;
        for (int i = 0; i < kStorm; ++i)
            paths.push_back(gallery.AddCapture("Storm " + std::to_string(i / kFilesPerGame)));
        const double baseMB = ResidentMB();
        std::atomic<bool> over{false};
        std::thread asker([&] {
            std::vector<TrackedUGC> recent;
            TrackedUGC one;
            for (size_t i = 0; !over; ++i) {
                queries.push_back(SecondsOf([&] { recent = tracker->GetRecentUGC(10); }));
                queries.push_back(
                    SecondsOf([&] { (void)tracker->GetUGCData(paths[i % paths.size()], one); }));
                grownMB = std::max(grownMB, ResidentMB() - baseMB);
                naps.push_back(
                    SecondsOf([] { std::this_thread::sleep_for(std::chrono::microseconds(200)); }));
            }
        });
        state.SetIterationTime(SecondsOf([&] {
            for (const std::string& path : paths)
                tracker->TrackFile(path);
            if (!host.WaitForAdded(kStorm)) state.SkipWithError("not all told");
        }));
        over = true;
        asker.join();
        if (RecordsOf(*tracker) != static_cast<size_t>(before + kStorm)) state.SkipWithError("not exact");
    }
    state.counters["longest_ms"] = Quantile(queries, 1) * 1000;
    state.counters["longest_nap_ms"] = Quantile(naps, 1) * 1000;
    state.counters["p999_ms"] = Quantile(queries, 0.999) * 1000;
    state.counters["queries"] = static_cast<double>(queries.size());
    state.counters["grown_MB"] = grownMB;
}

// A game with all the captures is asked for, and the ten newest.
void GameQueries(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    SampleGallery gallery;
    gallery.Fill(count, count);
    CountingHost host;
    const std::unique_ptr<UGCTracker> tracker = MakeTracker(host);
    WaitForWorker(*tracker);
    std::vector<double> games;
    std::vector<double> recents;
    std::vector<TrackedUGC> recent;
    std::vector<TrackedUGC> found;
    while (state.KeepRunning()) {
        recents.push_back(SecondsOf([&] { recent = tracker->GetRecentUGC(10); }));
        games.push_back(SecondsOf([&] { found = tracker->GetGameUGC("Game 0"); }));
        state.SetIterationTime(games.back());
    }
    state.counters["recent_us"] = Median(recents) * 1e6;
    state.counters["game_us_each"] = Median(games) * 1e6 / count;
}

// The folder of a game goes from a gallery with another 1,000 captures.
void RemoveGame(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    std::vector<double> times;
    while (state.KeepRunning()) {
        SampleGallery gallery;
        gallery.Fill(count, count);
        for (int i = 0; i < 1000; ++i)
            gallery.AddCapture("Other");
        CountingHost host;
        const std::unique_ptr<UGCTracker> tracker = MakeTracker(host);
        WaitForWorker(*tracker);
        gallery.Remove("Game 0");
        times.push_back(SecondsOf([&] {
            tracker->UntrackFile(gallery.Path("Game 0"));
            WaitForWorker(*tracker);
        }));
        state.SetIterationTime(times.back());
        if (RecordsOf(*tracker) != 1000) state.SkipWithError("not removed");
    }
    state.counters["us_each"] = Median(times) * 1e6 / count;
}

constexpr auto kMs = benchmark::kMillisecond;
BENCHMARK(Storm)->Arg(0)->Arg(100000)->Iterations(1)->UseManualTime()->Unit(kMs);
BENCHMARK(GameQueries)->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(5)->UseManualTime()->Unit(kMs);
BENCHMARK(RemoveGame)->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(3)->UseManualTime()->Unit(kMs);

}  // namespace
