#include "plugin-modules/Gallery/src/thumbnails/ThumbnailSweep.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/FolderReader.h"
#include "base/RandomName.h"
#include "base/ReadWrite.h"
#include "plugin-modules/Gallery/src/thumbnails/LabelledPng.h"

namespace {

// How many are looked for in one sweep: opening and asking takes some 10 us each.
constexpr size_t kLookedFor = 256;

struct Stored {
    std::string name;
    int64_t used = 0;    // nanoseconds since 1970
    uint64_t bytes = 0;  // of the disk
};

bool IsThumbnailName(std::string_view name) {
    const std::string_view suffix = kThumbnailSuffix;
    return name.size() == 16 + suffix.size() && name.substr(16) == suffix;
}

uint64_t DiskBytes(uint64_t size) {
    constexpr uint64_t kBlock = 4096;
    return (size + kBlock - 1) / kBlock * kBlock;
}

std::vector<Stored> List(KXP::FolderReader& reader) {
    std::vector<Stored> files;
    struct stat status {};
    while (reader.Next()) {
        if (!IsThumbnailName(reader.Name()) || !reader.Look(status, KXP::Links::Refuse)) continue;
        files.push_back({reader.Name(), KXP::Platform::ModifiedNs(status),
                         DiskBytes(static_cast<uint64_t>(status.st_size))});
    }
    return files;
}

void Remove(int folder, const std::string& name) {
    (void)unlinkat(folder, name.c_str(), 0);
}

// Removes the first of the files, which are in the order of their use, and leaves those that fit.
void RemoveOldest(int folder, std::vector<Stored>& files, uint64_t maxBytes) {
    uint64_t bytes = 0;
    for (const Stored& file : files)
        bytes += file.bytes;
    auto kept = files.begin();
    for (; bytes > maxBytes; ++kept) {
        Remove(folder, kept->name);
        bytes -= kept->bytes;
    }
    files.erase(files.begin(), kept);
}

// Also for what is no thumbnail of ours.
bool IsSourceGone(int folder, const std::string& name) {
    struct stat status {};
    const KXP::FileDescriptor file = KXP::OpenForReadAt(folder, name, status, KXP::Links::Refuse);
    std::string start(kMaxLabelBytes, '\0');
    if (file.IsOpen()) start.resize(KXP::ReadAt(file, 0, start.data(), start.size()));
    const std::string path(LabelledPath(start));
    return path.empty() || (stat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR));
}

size_t ByChance(size_t count) {
    return std::stoul(KXP::RandomName().substr(0, 8), nullptr, 16) % count;
}

}  // namespace

void SweepThumbnails(KXP::FileDescriptor folder, uint64_t maxBytes) {
    if (!folder.IsOpen()) return;
    KXP::FolderReader reader(std::move(folder));
    if (!reader.IsOpen()) return;
    std::vector<Stored> files = List(reader);
    std::sort(files.begin(), files.end(), [](const Stored& a, const Stored& b) { return a.used < b.used; });
    RemoveOldest(reader.descriptor(), files, maxBytes);
    if (files.empty()) return;
    // All of them have their turn in time, wherever in the order they are.
    const size_t first = ByChance(files.size());
    for (size_t i = 0; i < std::min(kLookedFor, files.size()); ++i) {
        const std::string& name = files[(first + i) % files.size()].name;
        if (IsSourceGone(reader.descriptor(), name)) Remove(reader.descriptor(), name);
    }
}
