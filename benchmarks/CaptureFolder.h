// Captures for the benchmarks to read, in a temporary folder.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "tests/support/CaptureBytes.h"

namespace benchmarks {

namespace fs = std::filesystem;

enum Kind : int { kPng, kJpg, kJps, kMp4Front, kMp4Behind, kExr, kOther, kKinds };

inline constexpr const char* kExtensions[kKinds] = {".png", ".jpg", ".jps", ".mp4", ".mp4", ".exr", ".txt"};
inline constexpr const char* kLabels[kKinds] = {
    "png", "jpg", "jps", "mp4, moov in front", "mp4, moov behind", "exr", "other"};
// The size of a small capture, so that the whole is never read by accident.
inline constexpr size_t kBulk = 65536;

// What a capture says of its game.
inline constexpr const char* kGameFacts =
    R"("DRSAppName":"An application","DRSProfileName":"A profile","ShortName":"app","CmsId":100021711)";

// A highlight differs from the next by its moment, while other captures of a game carry one block.
inline std::string HighlightBlock(int number) {
    return captures::Block("Ovirastream SDK",
                           std::string("{") + kGameFacts +
                               R"(,"HighlightName":"Victory","HighlightId":"victory",)"
                               R"("HighlightGroupId":"group","HighlightTags":1,"HighlightSignificance":2,)"
                               R"("EventTimeStamp":"2026-01-01T00:00:00.)" +
                               std::to_string(100000 + number) + R"("})");
}

// The `number` makes highlights differ.
inline std::string CaptureOf(Kind kind, int number = 0) {
    const std::string block =
        captures::Block("Ovirastream SHARE", std::string("{") + kGameFacts + R"(,"MediaType":"Manual"})");
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
            return samples::WithClaimedSize(captures::OwnJpeg(), 1920, 1080) + bulk;
        case kMp4Front:
            return captures::FileType() + captures::Movie(block) + media;
        case kMp4Behind:
            return captures::FileType() + media + captures::Movie(HighlightBlock(number));
        default:
            return bulk;
    }
}

// A temporary folder with `count` files of the kinds in turn, from `first` on.
class Folder {
  public:
    Folder(int first, int step, int count) {
        std::string name = (fs::temp_directory_path() / "gallery-benchmark-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
        path_ = name;
        for (int i = 0; i < count; ++i) {
            const Kind kind = static_cast<Kind>((first + i * step) % kKinds);
            files_.push_back((path_ / ("capture " + std::to_string(i) + kExtensions[kind])).string());
            std::ofstream(files_.back(), std::ios::binary) << CaptureOf(kind, i);
        }
    }
    ~Folder() { fs::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string path() const { return path_.string(); }
    const std::vector<std::string>& files() const { return files_; }

  private:
    fs::path path_;
    std::vector<std::string> files_;
};

// What no inspection of a file can save.
inline void OpenReadClose(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    char start[512];
    benchmark::DoNotOptimize(read(descriptor, start, sizeof(start)));
    close(descriptor);
}

}  // namespace benchmarks
