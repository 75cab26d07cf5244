#include "plugin-modules/Gallery/src/thumbnails/DesktopThumbnails.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

#include <sys/stat.h>

#include "base/FileCalls.h"
#include "base/FileDescriptor.h"
#include "base/NewFile.h"
#include "base/ReadWrite.h"
#include "common/text/TextUtil.h"
#include "plugin-modules/Gallery/src/thumbnails/CacheFolder.h"
#include "plugin-modules/Gallery/src/thumbnails/LabelledPng.h"

namespace desktop {
namespace {

struct FolderOfSize {
    const char* name;
    uint32_t side;  // no thumbnail in it is wider or higher, pixels
};
constexpr std::array<FolderOfSize, 4> kFolders{
    {{"normal", 128}, {"large", 256}, {"x-large", 512}, {"xx-large", 1024}}};

// A larger picture is no quick work.
constexpr size_t kMaxPictureBytes = 4 << 20;

const std::atomic<bool> kNeverCancelled{false};

KXP::FileDescriptor OpenSizeFolder(const FolderOfSize& size, Missing missing) {
    const std::string folder = ThumbnailsFolder();
    if (folder.empty()) return {};
    return OpenInCache(folder + "/" + size.name, missing);
}

// What a file is called in the cache; both are empty for a file that has no thumbnails there.
struct Names {
    std::string uri;
    std::string file;
};

Names NamesOf(const ovnxmedia::MediaLibrary& media, const ThumbnailCache::Key& key) {
    const std::string uri = FileUri(key.path);
    char name[OVNX_MEDIA_SHARED_NAME_SIZE];
    if (uri.empty() || media.sharedName(uri.c_str(), name) != OVNX_MEDIA_OK) return {};
    return {uri, name};
}

int64_t SecondsOf(const ThumbnailCache::Key& key) {
    return std::chrono::floor<std::chrono::seconds>(std::chrono::nanoseconds(key.time)).count();
}

// A picture in the key's box from the thumbnail in the folder; none unless it is right in every respect.
DrawnPicture Scale(const ovnxmedia::MediaLibrary& media, const KXP::FileDescriptor& folder,
                   const Names& names, const ThumbnailCache::Key& key, const std::atomic<bool>& cancelled) {
    struct stat status {};
    const KXP::FileDescriptor file = KXP::OpenForReadAt(folder.get(), names.file, status, KXP::Links::Refuse);
    // The standard counts seconds, in which a file may have changed after its thumbnail was made.
    if (!file.IsOpen() || !IsOwn(status) || KXP::Platform::ModifiedNs(status) < key.time) return {};
    const OvnxMediaOrigin origin{names.uri.c_str(), SecondsOf(key), key.size};
    std::string error;
    return DrawInBox(media, key.width, key.height, cancelled, error,
                     [&](const OvnxMediaRequest* request, OvnxMediaPicture* picture) {
                         return media.sharedThumbnail(file.get(), &origin, request, picture);
                     });
}

// The library scales files, so the PNG becomes one, which is gone when this returns.
DrawnPicture ScaleTo(const ovnxmedia::MediaLibrary& media, const FolderOfSize& size, const std::string& name,
                     std::string_view png) {
    const KXP::NewFile source(OpenSizeFolder(size, Missing::Leave), name);
    if (!source.IsOpen() || !KXP::WriteFully(source.descriptor(), png)) return {};
    std::string error;
    return DrawInBox(media, size.side, size.side, kNeverCancelled, error,
                     [&](const OvnxMediaRequest* request, OvnxMediaPicture* picture) {
                         return media.stillThumbnail(source.descriptor().get(), request, picture);
                     });
}

bool IsWritableByOthers(const KXP::FileDescriptor& folder) {
    struct stat status {};
    return fstat(folder.get(), &status) != 0 || (status.st_mode & 022) != 0;
}

// As GLib does: these and the letters and digits of ASCII stay.
bool StaysInUri(char letter) {
    const bool isWord = (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
                        (letter >= '0' && letter <= '9');
    return isWord || (letter != '\0' && std::strchr("-_.!~*'()/&=:@+$,", letter));
}

}  // namespace

DrawnPicture FindThumbnail(const ovnxmedia::MediaLibrary& media, const ThumbnailCache::Key& key,
                           const std::atomic<bool>& cancelled) {
    const Names names = NamesOf(media, key);
    if (names.uri.empty()) return {};
    // From one that is hardly larger than the box, fine lines come out softer than from the file.
    for (auto size = kFolders.rbegin(); size != kFolders.rend(); ++size) {
        if (size->side <= std::min(key.width, key.height)) break;
        const KXP::FileDescriptor folder = OpenSizeFolder(*size, Missing::Leave);
        if (!folder.IsOpen()) continue;
        DrawnPicture picture = Scale(media, folder, names, key, cancelled);
        if (!picture.png.empty()) return picture;
    }
    return {};
}

void LeaveThumbnail(const ovnxmedia::MediaLibrary& media, const DrawnThumbnail& drawn) {
    const uint32_t side = std::max(drawn.picture.width, drawn.picture.height);
    const auto size = std::find_if(kFolders.rbegin(), kFolders.rend(),
                                   [side](const FolderOfSize& folder) { return folder.side <= side; });
    const Names names = NamesOf(media, drawn.key);
    if (size == kFolders.rend() || names.uri.empty() || drawn.picture.png.size() > kMaxPictureBytes) return;
    KXP::FileDescriptor folder = OpenSizeFolder(*size, Missing::Make);
    if (!folder.IsOpen() || IsWritableByOthers(folder)) return;
    ThumbnailCache::Key any = drawn.key;
    any.width = any.height = 1;
    if (!Scale(media, folder, names, any, kNeverCancelled).png.empty()) return;
    const DrawnPicture scaled = ScaleTo(media, *size, names.file, drawn.picture.png);
    const KXP::SlabString bytes =
        AddLabel(scaled.png, DesktopLabelOf(names.uri, SecondsOf(drawn.key), drawn.key.size));
    KXP::NewFile file(std::move(folder), names.file);
    if (!bytes.empty() && file.IsOpen() && KXP::WriteFully(file.descriptor(), bytes)) (void)file.PutOver();
}

std::string FileUri(const std::string& path) {
    if (path.empty() || path.front() != '/') return "";
    std::string uri = "file://";
    for (const std::string& name : KXP::SplitString(path.substr(1), '/')) {
        if (name.empty() || name == "." || name == "..") return "";
        uri += '/';
        for (const char letter : name) {
            char escaped[4];
            std::snprintf(escaped, sizeof escaped, "%%%02X",
                          static_cast<unsigned>(static_cast<uint8_t>(letter)));
            uri += StaysInUri(letter) ? std::string(1, letter) : escaped;
        }
    }
    return uri;
}

}  // namespace desktop
