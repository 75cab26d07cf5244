// What a gallery of 100,000 captures costs that a record is there of: a rebuild after a change made while the
// product was stopped, a start with captions, captions in a row, and a stop. Measured by processor time, with
// the floor in turn.
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <sys/stat.h>

#include "benchmarks/SampleGallery.h"
#include "plugin-modules/Gallery/src/media/FolderCrc.h"
#include "plugin-modules/Gallery/src/tracker/CaptureInspector.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptLine.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

namespace {

using namespace benchmarks;

constexpr int kCaptures = 100000;
constexpr const char* kTrackerFile = "UGCTracker.json";

// A gallery that is on record.
struct KnownGallery : SampleGallery {
    KnownGallery() : paths(Fill(kCaptures)) { WaitForWorker(*MakeTracker(host)); }

    std::string TrackerFile() const { return home() / ShareFile(kTrackerFile); }

    CountingHost host;
    const std::vector<std::string> paths;
};

// Reads and parses the tracker's file, asks one stat for each file, reads the changed ones, and writes what
// it has over what it wrote the last time.
void BareRebuild(const KnownGallery& gallery, size_t changed) {
    KXP::JSONFile file;
    KXP::Document document;
    file.Init(gallery.TrackerFile());
    if (file.ReadAndParseJSON(document).Failed()) throw std::runtime_error("no tracker file");
    for (const KXP::Value& record : document["UGC"].GetArray()) {
        struct stat status {};
        benchmark::DoNotOptimize(lstat(record["path"].GetString(), &status));
    }
    for (size_t i = 0; i < changed; ++i)
        benchmark::DoNotOptimize(InspectCapture(gallery.paths[i]));
    file.Init(gallery.home() / "floor.json");
    (void)file.WriteJSON(document);
}

// "ratio" is that of the times a user waits, at most 1.3; "cpu_ratio" that of the processor times, in which
// reading the file and walking the gallery at once gains nothing.
void RebuildKnown(benchmark::State& state) {
    KnownGallery gallery;
    const auto changed = static_cast<size_t>(state.range(0));
    std::vector<double> floors;
    std::vector<double> rebuilds;
    std::vector<double> ratios;
    std::vector<double> cpuRatios;
    std::vector<double> waits;
    while (state.KeepRunning()) {
        double bareWait = 0;
        floors.push_back(CpuSecondsOf([&] { bareWait = SecondsOf([&] { BareRebuild(gallery, changed); }); }));
        for (size_t i = 0; i < changed; ++i)
            std::filesystem::last_write_time(gallery.paths[i], std::filesystem::file_time_type::clock::now());
        gallery.Add("Game 0/foreign " + std::to_string(floors.size()) + ".txt", "foreign");
        std::unique_ptr<UGCTracker> tracker;
        rebuilds.push_back(CpuSecondsOf([&] {
            waits.push_back(SecondsOf([&] {
                tracker = MakeTracker(gallery.host);
                WaitForWorker(*tracker);
            }));
        }));
        ratios.push_back(waits.back() / bareWait);
        cpuRatios.push_back(rebuilds.back() / floors.back());
        state.SetIterationTime(rebuilds.back());
        if (RecordsOf(*tracker) != kCaptures) state.SkipWithError("not rebuilt");
    }
    state.counters["ratio"] = Median(ratios);
    state.counters["cpu_ratio"] = Median(cpuRatios);
    state.counters["cpu_ms"] = Median(rebuilds) * 1000;
    state.counters["floor_cpu_ms"] = Median(floors) * 1000;
    state.counters["wait_ms"] = Median(waits) * 1000;
}

// A start of a gallery where every capture has a caption.
void StartCaptioned(benchmark::State& state) {
    SampleGallery gallery;
    CountingHost host;
    std::string lines;
    for (const std::string& path : gallery.Fill(kCaptures)) {
        KeptFacts facts;
        facts.topBarText = "Finally";
        lines += WriteKeptLine({path, StampAt(path), facts});
    }
    gallery.home().Write(gallery.ShareFile("UGCKept.jsonl"), lines);
    WaitForWorker(*MakeTracker(host));
    std::vector<double> waits;
    std::vector<double> starts;
    std::vector<double> all;
    while (state.KeepRunning()) {
        std::unique_ptr<UGCTracker> tracker;
        all.push_back(CpuSecondsOf([&] {
            starts.push_back(
                CpuSecondsOf([&] { waits.push_back(SecondsOf([&] { tracker = MakeTracker(host); })); }));
            WaitForWorker(*tracker);
        }));
        state.SetIterationTime(starts.back());
        if (tracker->GetRecentUGC(1).front().topBarText.empty()) state.SkipWithError("no captions");
    }
    state.counters["wait_ms"] = Median(waits) * 1000;
    state.counters["cpu_ms"] = Median(starts) * 1000;
    state.counters["settled_cpu_ms"] = Median(all) * 1000;
}

// A stop a moment after a capture has come; "sum_ms" is what one sum of the tree takes then.
void StopAfterCapture(benchmark::State& state) {
    KnownGallery gallery;
    std::vector<double> waits;
    std::vector<double> cpu;
    std::vector<double> sums;
    while (state.KeepRunning()) {
        const std::unique_ptr<UGCTracker> tracker = MakeTracker(gallery.host, true);
        WaitForWorker(*tracker);
        gallery.AddCapture("Live");
        std::this_thread::sleep_for(std::chrono::milliseconds(state.range(0)));
        cpu.push_back(CpuSecondsOf([&] { waits.push_back(SecondsOf([&] { tracker->Stop(); })); }));
        unsigned crc = 0;
        sums.push_back(SecondsOf([&] { media::CalculateFolderCRC(gallery.path(), gallery.path(), crc); }));
        state.SetIterationTime(waits.back());
        const std::string text = std::to_string(crc);
        std::ifstream file(gallery.TrackerFile());
        const std::string whole(std::istreambuf_iterator<char>(file), {});
        if (whole.find("\"folderCRC\": " + text) == std::string::npos) state.SkipWithError("sum withheld");
    }
    state.counters["median_ms"] = Median(waits) * 1000;
    state.counters["longest_ms"] = Quantile(waits, 1) * 1000;
    state.counters["cpu_ms"] = Median(cpu) * 1000;
    state.counters["sum_ms"] = Median(sums) * 1000;
}

constexpr auto kMs = benchmark::kMillisecond;
BENCHMARK(RebuildKnown)->ArgName("changed")->Arg(0)->Arg(100)->Iterations(11)->UseManualTime()->Unit(kMs);
BENCHMARK(StartCaptioned)->Iterations(7)->UseManualTime()->Unit(kMs);
BENCHMARK(StopAfterCapture)->ArgName("ms")->Arg(0)->Arg(300)->Iterations(7)->UseManualTime()->Unit(kMs);

}  // namespace
