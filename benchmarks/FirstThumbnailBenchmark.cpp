// How long a page waits for the first thumbnail of a screenshot of 3840 x 2160: the whole request, beside the
// bare decoder, in turn. Targets for "cpu_ratio": 1.0 of a PNG, 1.2 of a JPEG, and with a file manager's
// thumbnail of 512 pixels in the user's cache ("shown:1") 0.1 and 0.3.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "base/FileCalls.h"
#include "benchmarks/BareStills.h"
#include "benchmarks/Product.h"
#include "benchmarks/Times.h"
#include "plugin-modules/Gallery/src/thumbnails/DesktopThumbnails.h"
#include "tests/support/TempGallery.h"

namespace {

using namespace benchmarks;

const std::atomic<bool> kGoing{false};

// As of a file manager that has shown the file.
class FileManager {
  public:
    FileManager(const std::string& path, FILE* file) : path_(path) {
        std::string error;
        picture_ = DrawInBox(media_, 512, 512, kGoing, error, [&](const auto* request, auto* picture) {
            return media_.stillThumbnail(fileno(file), request, picture);
        });
    }
    void Show() const {
        struct stat status {};
        stat(path_.c_str(), &status);
        const int64_t time = KXP::Platform::ModifiedNs(status);
        desktop::LeaveThumbnail(media_,
                                {{path_, static_cast<uint64_t>(status.st_size), time, 0, 0}, picture_});
    }

  private:
    const std::string path_;
    const ovnxmedia::MediaLibrary media_{PRODUCT_DEPENDENCIES};
    DrawnPicture picture_;
};

// A change of its time makes it a file that nobody has seen.
void Compare(benchmark::State& state, const std::string& bytes, void (*bare)(FILE*), bool isShown) {
    const TempGallery gallery;
    const File file = FileOf(bytes);
    const std::string path = gallery.home().Write("screenshot", bytes);
    const std::string payload = "{" + Quoted("file", path) + R"(,"width":320,"height":180})";
    const FileManager manager(path, file.get());
    Product product(PRODUCT_PLUGIN);
    Paired times;
    for (int64_t seconds = 1; state.KeepRunning(); ++seconds) {
        const timespec changed[2]{{seconds, 0}, {seconds, 0}};
        utimensat(AT_FDCWD, path.c_str(), changed, 0);
        if (isShown) manager.Show();
        times.Floor([&] { bare(file.get()); });
        times.Product([&] { product.Ask("GetThumbnail", payload); });
        state.SetIterationTime(times.lastSeconds());
    }
    times.Report(state);
}

void FirstThumbnailOfPng(benchmark::State& state) {
    Compare(state, PngOf4K(), BarePng, state.range(0) != 0);
}
void FirstThumbnailOfJpeg(benchmark::State& state) {
    Compare(state, JpegOf4K(), BareJpeg, state.range(0) != 0);
}
void Cases(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("shown")->Arg(0)->Arg(1)->Iterations(31)->UseManualTime()->Unit(
        benchmark::kMillisecond);
}
BENCHMARK(FirstThumbnailOfPng)->Apply(Cases);
BENCHMARK(FirstThumbnailOfJpeg)->Apply(Cases);

}  // namespace
