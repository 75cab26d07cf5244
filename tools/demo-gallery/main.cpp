// demo-gallery FOLDER: fills the folder with pictures and videos of games that do not exist, dated over the
// last weeks. Fails when one of the files is there already.
#include <cstdio>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

#include "demo-gallery/Files.h"

namespace demo {
namespace {

namespace fs = std::filesystem;

constexpr time_t kDay = time_t{24} * 60 * 60;

// The end of yesterday, so that no capture is of the future.
time_t EndOfAlbum() {
    const time_t now = std::time(nullptr);
    return now - now % kDay;
}

void SetTime(const fs::path& path, time_t time) {
    const timespec times[2] = {{time, 0}, {time, 0}};
    if (utimensat(AT_FDCWD, path.c_str(), times, 0) != 0)
        throw std::runtime_error("cannot set the time of " + path.string());
}

void WriteStill(const Capture& capture, const fs::path& path) {
    std::ofstream file(path, std::ios::binary);
    file << StillFile(capture);
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path.string());
}

using Write = std::function<void(const Capture&, const fs::path&)>;

// Those of the captures that are videos, or those that are not.
void WriteAll(const std::vector<Capture>& captures, const fs::path& folder, bool videos, const Write& write) {
    for (const Capture& capture : captures) {
        if (IsVideo(capture) != videos) continue;
        const fs::path path = folder / RelativePath(capture);
        if (fs::exists(path)) throw std::runtime_error(path.string() + " is there already");
        fs::create_directories(path.parent_path());
        try {
            write(capture, path);
        } catch (const std::exception&) {
            fs::remove(path);
            throw;
        }
        SetTime(path, EndOfAlbum() - time_t{capture.minutesAgo} * 60);
    }
}

// A gallery without videos is better than none.
void WriteVideos(const std::vector<Capture>& captures, const fs::path& folder) {
    try {
        WriteAll(captures, folder, true, WriteVideo);
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "videos are left out: %s\n", error.what());
    }
}

void Fill(const fs::path& folder) {
    const std::vector<Capture> captures = MakeAlbum();
    auto videos = std::async(std::launch::async, WriteVideos, captures, folder);
    WriteAll(captures, folder, false, WriteStill);
    videos.get();
}

}  // namespace
}  // namespace demo

int main(int argc, char** argv) {
    const std::string_view folder = argc == 2 ? argv[1] : "";
    const bool isHelp = folder == "-h" || folder == "--help";
    if (isHelp || folder.empty() || folder.front() == '-') {
        std::fputs("Fills a folder with made captures of several games.\nUsage: demo-gallery FOLDER\n",
                   isHelp ? stdout : stderr);
        return isHelp ? 0 : 2;
    }
    try {
        demo::Fill(argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "demo-gallery: %s\n", error.what());
        return 1;
    }
    return 0;
}
