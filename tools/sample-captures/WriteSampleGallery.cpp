#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>

#include "sample-captures/SampleGallery.h"

namespace samples {
namespace {

namespace fs = std::filesystem;

constexpr time_t kFirstTime = 1773511200;  // 2026-03-14 18:00:00 UTC
constexpr time_t kStep = 60;

[[noreturn]] void Fail(const char* what, const fs::path& path, int error) {
    throw std::runtime_error(std::string(what) + " " + path.string() + ": " + std::strerror(error));
}

void MakeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) Fail("Could not make the folder", folder, error.value());
}

void WriteNewFile(const fs::path& path, const std::string& bytes, time_t time) {
    std::FILE* file = std::fopen(path.c_str(), "wbx");
    if (!file) Fail("Could not make the file", path, errno);
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    const int writeError = errno;
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed) Fail("Could not write the file", path, written ? errno : writeError);
    const timespec times[2] = {{time, 0}, {time, 0}};
    if (utimensat(AT_FDCWD, path.c_str(), times, 0) != 0) Fail("Could not set the time of", path, errno);
}

}  // namespace

void WriteSampleGallery(const std::string& folder) {
    MakeFolder(folder);
    time_t time = kFirstTime;
    for (const SampleFile& file : MakeSampleGallery()) {
        const fs::path path = fs::path(folder) / file.relativePath;
        MakeFolder(path.parent_path());
        if (path.has_filename()) WriteNewFile(path, file.bytes, time);
        time += kStep;
    }
}

}  // namespace samples
