#include "libraries/ovnx-codelib/Trim.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <stdexcept>
#include <string>

#include <sys/stat.h>

#include "base/NewFile.h"
#include "base/Text.h"

namespace codelib {
namespace {

using namespace ovsxcodeapi;

// What the library with the codecs returns is handed on as it is.
static_assert(int{RemuxOk} == OVNX_MEDIA_OK && int{RemuxUnknownFormat} == OVNX_MEDIA_UNKNOWN_FORMAT &&
              int{RemuxDamaged} == OVNX_MEDIA_DAMAGED && int{RemuxOverLimit} == OVNX_MEDIA_OVER_LIMIT &&
              int{RemuxUnreadable} == OVNX_MEDIA_UNREADABLE && int{RemuxNoMemory} == OVNX_MEDIA_NO_MEMORY &&
              int{RemuxEmptyRange} == OVNX_MEDIA_EMPTY_RANGE && int{RemuxNoVideo} == OVNX_MEDIA_NO_VIDEO &&
              int{RemuxUnwritable} == OVNX_MEDIA_UNWRITABLE && int{RemuxUnfaithful} == OVNX_MEDIA_UNFAITHFUL);

// Throws for an empty text, one without a terminating zero, and one that is not Unicode.
std::string TextOf(const wchar_t (&text)[kTextSize]) {
    const wchar_t* end = std::find(text, text + kTextSize, L'\0');
    if (end == text || end == text + kTextSize) throw std::invalid_argument("a path without an end");
    return KXP::WideToUtf8({text, static_cast<size_t>(end - text)});
}

RemuxBlock& BlockOf(const RemuxParams& params) {
    if (params.version != 1 || params.kind != 1 || params.blockSize != sizeof(RemuxBlock) || !params.block ||
        params.block->version != 1)
        throw std::invalid_argument("not a record of this version");
    return *params.block;
}

// Whether a clip may be put where `clip` is to go.
int32_t CheckPlace(const KXP::NewFile& clip, const struct stat& source) {
    struct stat older {};
    if (!clip.LookAtPlace(older)) return errno == ENOENT ? RemuxOk : RemuxUnwritable;
    if (!S_ISREG(older.st_mode)) return RemuxUnwritable;
    const bool isSource = older.st_dev == source.st_dev && older.st_ino == source.st_ino;
    return isSource ? RemuxSameFile : RemuxOk;
}

int32_t TrimFile(const ovnxmedia::MediaLibrary& media, RemuxBlock& block, const std::string& from,
                 const std::string& to) {
    struct stat source {};
    const KXP::FileDescriptor input = KXP::OpenForRead(from, source);
    if (!input.IsOpen()) return RemuxUnreadable;
    // The owner can read and write the clip even if the source is protected.
    KXP::NewFile clip(to, (source.st_mode & 0777) | S_IRUSR | S_IWUSR);
    if (!clip.IsOpen()) return RemuxUnwritable;
    if (const int32_t refusal = CheckPlace(clip, source)) return refusal;
    const OvnxMediaRemuxRequest request{block.start, block.end, block.flags & RemuxAtKeyframe,
                                        nullptr,     0,         &block.leftOut};
    if (const int32_t failure = media.remux(input.get(), clip.descriptor().get(), &request)) return failure;
    return clip.PutOver(KXP::Durability::ContentAndName) ? RemuxOk : RemuxUnwritable;
}

}  // namespace

int32_t Trim(const ovnxmedia::MediaLibrary& media, const RemuxParams& params) noexcept {
    try {
        RemuxBlock& block = BlockOf(params);
        return TrimFile(media, block, TextOf(block.input), TextOf(block.output));
    } catch (const std::exception&) {
        return RemuxBadRecord;
    }
}

}  // namespace codelib
