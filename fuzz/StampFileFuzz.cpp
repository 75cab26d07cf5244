// The stamps beside a tracker's file, named by their own header: what is read can be written, and is then the
// same file.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

#include "fuzz/Plain.h"
#include "fuzz/QuietLog.h"
#include "plugin-modules/Gallery/src/tracker/journal/StampFile.h"

namespace {

// A file of this process alone, removed when it ends.
struct OwnFile {
    OwnFile() {
        stamps.Init(
            (std::filesystem::temp_directory_path() / ("stamps-" + std::to_string(getpid()) + ".json"))
                .string());
    }
    ~OwnFile() { std::filesystem::remove(stamps.path()); }
    StampFile stamps;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    static OwnFile own;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    std::ofstream(own.stamps.path(), std::ios::binary) << bytes << std::flush;
    uint64_t words[6] = {};
    if (size >= 16 + sizeof words) std::memcpy(words, data + 16, sizeof words);
    KXP::JSONFile::Stamp of;
    of.size = words[0];
    of.seconds = static_cast<decltype(of.seconds)>(words[1]);
    of.nanoseconds = static_cast<decltype(of.nanoseconds)>(words[2]);
    of.inode = words[3];
    const std::optional<std::vector<FileStamp>> stamps = own.stamps.Read(of);
    if (!stamps) return 0;
    own.stamps.Write(of, 0, *stamps);
    std::ifstream file(own.stamps.path(), std::ios::binary);
    plain::Demand(std::string(std::istreambuf_iterator<char>(file), {}) == bytes);
    of.inode += 1;
    plain::Demand(!own.stamps.Read(of));
    return 0;
}
