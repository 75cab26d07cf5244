// What the ownership test costs beside what no test can save: opening each file, one read and the closing.
// The target for a folder scan is 1.3 times that floor (SniffFolder over FloorOfFolder, of one run).
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"
#include "tests/support/CaptureBytes.h"

namespace {

namespace fs = std::filesystem;

enum Kind : int { kPng, kJpg, kJps, kMp4Front, kMp4Behind, kExr, kOther, kKinds };

constexpr const char* kExtensions[kKinds] = {".png", ".jpg", ".jps", ".mp4", ".mp4", ".exr", ".txt"};
constexpr const char* kLabels[kKinds] = {"png", "jpg",  "jps", "mp4, moov in front", "mp4, moov behind",
                                         "exr", "other"};
constexpr int kFolderFiles = 10000;

// The size of a small capture, so that the whole is never read by accident.
constexpr size_t kBulk = 65536;

std::string CaptureOf(Kind kind) {
    const std::string block =
        captures::Block("Ovirastream SDK", R"({"DRSAppName":"An application","DRSProfileName":"A profile",)"
                                           R"("ShortName":"app","CmsId":100021711,"HighlightName":"Victory",)"
                                           R"("HighlightId":"victory","HighlightGroupId":"group",)"
                                           R"("HighlightTags":1,"HighlightSignificance":2})");
    std::string bulk(kBulk, '\x55');
    const std::string media = samples::Mp4Box("mdat", bulk);
    switch (kind) {
        case kPng:
            return captures::Png(captures::PngText("Software", "Ovirastream SHARE 1.0") +
                                 captures::PngText("DRSName", "An application") +
                                 captures::PngText("Description", block)) +
                   bulk;
        case kJpg:
        case kJps:
            return captures::OwnJpeg(1080, 1920) + bulk;
        case kMp4Front:
            return captures::FileType() + captures::Movie(block) + media;
        case kMp4Behind:
            return captures::FileType() + media + captures::Movie(block);
        default:
            return bulk;
    }
}

// A temporary folder with `count` files of the kinds in turn, from `first` on.
class Folder {
  public:
    Folder(int first, int step, int count) {
        std::string name = (fs::temp_directory_path() / "sniff-benchmark-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
        path_ = name;
        for (int i = 0; i < count; ++i) {
            const Kind kind = static_cast<Kind>((first + i * step) % kKinds);
            files_.push_back((path_ / ("capture " + std::to_string(i) + kExtensions[kind])).string());
            std::ofstream(files_.back(), std::ios::binary) << CaptureOf(kind);
        }
    }
    ~Folder() { fs::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::vector<std::string>& files() const { return files_; }

  private:
    fs::path path_;
    std::vector<std::string> files_;
};

// Made once for both benchmarks, so that they see the same files.
const Folder& MixedFolder() {
    static const Folder folder(0, 1, kFolderFiles);
    return folder;
}

void OpenReadClose(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    char start[512];
    benchmark::DoNotOptimize(read(descriptor, start, sizeof(start)));
    close(descriptor);
}

bool SniffOne(const std::string& path) {
    media::SniffResult result;
    benchmark::DoNotOptimize(media::SniffFile(path, result));
    return result.isOwn;
}

void SniffFile(benchmark::State& state) {
    const int kind = static_cast<int>(state.range(0));
    const Folder folder(kind, 0, 1);
    const std::string& path = folder.files().front();
    if (SniffOne(path) != (kind < kExr)) state.SkipWithError("not judged as made");
    while (state.KeepRunning())
        SniffOne(path);
    state.SetLabel(kLabels[kind]);
}
BENCHMARK(SniffFile)->DenseRange(0, kKinds - 1);

void FloorOfFile(benchmark::State& state) {
    const Folder folder(kPng, 0, 1);
    while (state.KeepRunning())
        OpenReadClose(folder.files().front());
}
BENCHMARK(FloorOfFile);

void FloorOfFolder(benchmark::State& state) {
    const std::vector<std::string>& files = MixedFolder().files();
    while (state.KeepRunning())
        for (const std::string& path : files)
            OpenReadClose(path);
    state.SetItemsProcessed(state.iterations() * kFolderFiles);
}
BENCHMARK(FloorOfFolder)->Unit(benchmark::kMillisecond);

void SniffFolder(benchmark::State& state) {
    const std::vector<std::string>& files = MixedFolder().files();
    while (state.KeepRunning())
        for (const std::string& path : files)
            SniffOne(path);
    state.SetItemsProcessed(state.iterations() * kFolderFiles);
}
BENCHMARK(SniffFolder)->Unit(benchmark::kMillisecond);

}  // namespace
