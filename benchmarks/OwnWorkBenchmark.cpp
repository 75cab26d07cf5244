// How long a page waits for what the product itself does to captures: a move within the gallery, and a trim
// into a file of its own and in place, through the staged library. The target, with 1,000 and with 100,000
// captures on record, and without the system's file events as with them: 50 ms median and 150 ms for
// "p99_ms". A trim is measured without the cut itself, which is made by the bare library in turn ("cut_ms").
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <sys/inotify.h>

#include "base/FileDescriptor.h"
#include "benchmarks/Product.h"
#include "benchmarks/Times.h"
#include "sample-media/MadeMedia.h"
#include "tests/support/TempGallery.h"
#include "tests/unit/ovnx-codelib/CodecLibrary.h"

namespace {

using namespace benchmarks;

constexpr int kFilesPerGame = 200;

// Takes all of the user's inotify instances, so that the plug-in gets none.
class NoFileEvents {
  public:
    NoFileEvents() {
        for (int fd = inotify_init1(IN_CLOEXEC); fd >= 0; fd = inotify_init1(IN_CLOEXEC))
            taken_.emplace_back(fd);
    }

  private:
    std::vector<KXP::FileDescriptor> taken_;
};

void Report(benchmark::State& state, const std::vector<double>& times) {
    state.counters["median_ms"] = Quantile(times, 0.5);
    state.counters["p99_ms"] = Quantile(times, 0.99);
}

// `count` screenshots on record, and a video to work on.
class Gallery : public TempGallery {
  public:
    explicit Gallery(int64_t count) {
        const std::string image = captures::Png(captures::PngText("Software", "Ovirastream SHARE"));
        for (int64_t i = 0; i < count; ++i)
            Add("Game " + std::to_string(i / kFilesPerGame) + "/" + std::to_string(i) + ".png", image);
        made::Video video;
        video.tagc = captures::Block("Ovirastream SHARE", "{}");
        std::filesystem::create_directories(Path("Live"));
        std::filesystem::copy_file(made::Path(video), Path("Live/source.mp4"));
    }
};

// The second argument tells whether the plug-in has the system's file events.
std::optional<NoFileEvents> EventsOf(const benchmark::State& state) {
    std::optional<NoFileEvents> none;
    if (state.range(1) == 0) none.emplace();
    return none;
}

void Move(benchmark::State& state) {
    const Gallery gallery(state.range(0));
    const std::optional<NoFileEvents> none = EventsOf(state);
    Product product(PRODUCT_PLUGIN);
    std::vector<double> times;
    while (state.KeepRunning()) {
        const std::string name = "/" + std::to_string(times.size()) + ".mp4";
        std::filesystem::copy_file(gallery.Path("Live/source.mp4"), gallery.home() / name.substr(1));
        product.Ask("MoveFile", "{" + Quoted("source", gallery.home() / name.substr(1)) + "," +
                                    Quoted("destination", gallery.Path("Live" + name)) + "}");
        times.push_back(product.Ask("MoveFile", "{" + Quoted("source", gallery.Path("Live" + name)) + "," +
                                                    Quoted("destination", gallery.Path("Moved" + name)) +
                                                    "}"));
        state.SetIterationTime(times.back() / 1000);
    }
    Report(state, times);
}

void Trim(benchmark::State& state, bool inPlace) {
    const Gallery gallery(state.range(0));
    const std::optional<NoFileEvents> none = EventsOf(state);
    const CodecLibrary library;
    Product product(PRODUCT_PLUGIN);
    std::vector<double> times;
    std::vector<double> cuts;
    while (state.KeepRunning()) {
        const std::string name = std::to_string(times.size()) + ".mp4";
        const Clock::time_point start = Clock::now();
        if (library.Remux(gallery.Path("Live/source.mp4"), gallery.home() / name, 0.5, 1.5) != 0)
            state.SkipWithError("not cut");
        cuts.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        std::string source = gallery.Path("Live/source.mp4");
        if (inPlace) {
            source = gallery.Path("Live/in place.mp4");
            std::filesystem::copy_file(gallery.Path("Live/source.mp4"), source,
                                       std::filesystem::copy_options::overwrite_existing);
        }
        const double whole =
            product.Ask("Trim", "{" + Quoted("input", source) + "," +
                                    Quoted("output", inPlace ? source : gallery.Path("Live/" + name)) +
                                    ",\"headTrimMs\":500,\"lengthMs\":1000}");
        times.push_back(std::max(whole - cuts.back(), 0.0));
        state.SetIterationTime(times.back() / 1000);
    }
    Report(state, times);
    state.counters["cut_ms"] = Quantile(cuts, 0.5);
}

// A page gives captions in a row and asks for captures in between, while the worker writes the captions into
// the tracker's file. The target of a caption, median and longest, is 20 ms; "asked_longest_ms" is how long
// a question waited. "writes" is how often the file was written.
void Captions(benchmark::State& state) {
    const Gallery gallery(state.range(0));
    Product product(PRODUCT_PLUGIN);
    const std::filesystem::path stamps = gallery.home() / gallery.ShareFile("UGCTracker.stamps");
    std::set<std::filesystem::file_time_type> writes;
    std::vector<double> captions;
    std::vector<double> asked;
    while (state.KeepRunning()) {
        const std::string number = std::to_string(captions.size());
        const std::string file = gallery.Path("Game 0/" + number + ".png");
        captions.push_back(product.Ask("AddMeme", "{" + Quoted("file", file) + ",\"memeInfo\":{" +
                                                      Quoted("topBarText", number) + "," +
                                                      Quoted("bottomBarText", "") + "}}"));
        asked.push_back(product.Ask("GetFileMetadata", "{" + Quoted("file", file) + "}"));
        asked.push_back(product.Ask("GetAppUGC", "{" + Quoted("appName", "Live") + "}"));
        writes.insert(std::filesystem::last_write_time(stamps));
        state.SetIterationTime(captions.back() / 1000);
    }
    Report(state, captions);
    state.counters["longest_ms"] = Quantile(captions, 1);
    state.counters["asked_median_ms"] = Quantile(asked, 0.5);
    state.counters["asked_longest_ms"] = Quantile(asked, 1);
    state.counters["writes"] = static_cast<double>(writes.size() - 1);
}

void Cases(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"captures", "events"})->UseManualTime()->Unit(benchmark::kMillisecond);
    benchmark->Iterations(100)->Args({1000, 1})->Args({1000, 0})->Args({100000, 1})->Args({100000, 0});
}
BENCHMARK(Move)->Apply(Cases);
BENCHMARK_CAPTURE(Trim, IntoAFileOfItsOwn, false)->Apply(Cases);
BENCHMARK_CAPTURE(Trim, InPlace, true)->Apply(Cases);
BENCHMARK(Captions)->Arg(1000)->Arg(100000)->Iterations(200)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
