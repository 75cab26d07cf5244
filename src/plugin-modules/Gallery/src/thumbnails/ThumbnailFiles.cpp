#include "plugin-modules/Gallery/src/thumbnails/ThumbnailFiles.h"

#include <cstdio>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "base/NewFile.h"
#include "base/Places.h"
#include "base/ReadWrite.h"
#include "plugin-modules/Gallery/src/thumbnails/CacheFolder.h"
#include "plugin-modules/Gallery/src/thumbnails/LabelledPng.h"
#include "plugin-modules/Gallery/src/thumbnails/ThumbnailSweep.h"

namespace {

// Larger ones would push out too many others.
constexpr size_t kMaxFileBytes = 8 << 20;

// The same in all processes, unlike std::hash. A collision is harmless, as the label tells files apart.
uint64_t HashOf(const std::string& text) {
    uint64_t hash = 0xCBF29CE484222325U;
    for (const char byte : text)
        hash = (hash ^ static_cast<uint8_t>(byte)) * 0x100000001B3U;
    return hash;
}

// The file that changes keeps its name, so that its new picture replaces the old one.
std::string FileNameOf(const ThumbnailCache::Key& key) {
    const std::string box = std::to_string(key.width) + "x" + std::to_string(key.height);
    char name[17];
    std::snprintf(name, sizeof name, "%016llx",
                  static_cast<unsigned long long>(HashOf(box + ":" + key.path)));
    return name + std::string(kThumbnailSuffix);
}

bool MakePrivate(const KXP::FileDescriptor& folder) {
    struct stat status {};
    if (fstat(folder.get(), &status) != 0) return false;
    return (status.st_mode & 077) == 0 || fchmod(folder.get(), 0700) == 0;
}

// Closed when there is no folder for the user alone.
KXP::FileDescriptor OpenThumbnails(Missing missing) {
    KXP::FileDescriptor folder = OpenInCache(std::string(KXP::kProductFolder) + "/Thumbnails", missing);
    return folder.IsOpen() && MakePrivate(folder) ? std::move(folder) : KXP::FileDescriptor();
}

bool IsWholePath(const std::string& path) {
    return !path.empty() && path.front() == '/';
}

}  // namespace

ThumbnailFiles::ThumbnailFiles(uint64_t maxBytes)
    : maxBytes_(maxBytes), sweepBytes_(maxBytes / 16), sinceSweep_(sweepBytes_) {}

KXP::SlabString ThumbnailFiles::Find(const ThumbnailCache::Key& key) {
    const KXP::FileDescriptor folder = OpenThumbnails(Missing::Leave);
    if (!IsWholePath(key.path) || !folder.IsOpen()) return "";
    struct stat status {};
    const KXP::FileDescriptor file =
        KXP::OpenForReadAt(folder.get(), FileNameOf(key), status, KXP::Links::Refuse);
    KXP::FileBytes content;
    if (!file.IsOpen() || !IsOwn(status) || !KXP::ReadWhole(file, kMaxFileBytes, content)) return "";
    KXP::SlabString png(content.view());
    if (!TakeLabel(png, LabelOf(key))) return "";
    // The time says when the file was last asked for.
    (void)futimens(file.get(), nullptr);
    return png;
}

void ThumbnailFiles::Put(const ThumbnailCache::Key& key, std::string_view png) {
    if (!IsWholePath(key.path)) return;
    const KXP::SlabString bytes = AddLabel(png, LabelOf(key));
    if (bytes.empty() || bytes.size() > kMaxFileBytes) return;
    {
        KXP::NewFile file(OpenThumbnails(Missing::Make), FileNameOf(key));
        if (!file.IsOpen() || !KXP::WriteFully(file.descriptor(), bytes) || !file.PutOver()) return;
    }
    // What another process writes meanwhile has room in what is left free.
    if (MustSweepAfter(bytes.size()))
        SweepThumbnails(OpenThumbnails(Missing::Leave), maxBytes_ - 2 * sweepBytes_);
}

bool ThumbnailFiles::MustSweepAfter(uint64_t bytes) {
    const KXP::MutexLock lock(mutex_);
    sinceSweep_ += bytes;
    if (sinceSweep_ < sweepBytes_) return false;
    sinceSweep_ = 0;
    return true;
}
