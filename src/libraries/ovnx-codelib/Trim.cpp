#include "libraries/ovnx-codelib/Trim.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "common/FileDescriptor.h"
#include "common/TextUtil.h"
#include "libraries/ovnx-codelib/ClipFile.h"

namespace codelib {
namespace {

int32_t Fail(int32_t status, const char* what, const std::string& path, const char* reason) {
    KXP_LOG(KXP::LogFailure, "%s %s: %s", what, path.c_str(), reason);
    return status;
}

// Throws where there is nothing, no zero behind it, or no Unicode.
std::string TextOf(const wchar_t (&text)[ovsxcodeapi::kTextSize]) {
    const wchar_t* end = std::find(text, text + ovsxcodeapi::kTextSize, L'\0');
    if (end == text || end == text + ovsxcodeapi::kTextSize)
        throw std::invalid_argument("a path without an end");
    return KXP::WideToUtf8({text, static_cast<size_t>(end - text)});
}

const ovsxcodeapi::RemuxBlock& BlockOf(const ovsxcodeapi::RemuxParams& params) {
    if (params.version != 1 || params.kind != 1 || params.blockSize != sizeof(ovsxcodeapi::RemuxBlock) ||
        !params.block || params.block->version != 1)
        throw std::invalid_argument("not a record of this version");
    return *params.block;
}

int32_t TrimFile(const MediaLibrary& media, const ovsxcodeapi::RemuxBlock& block, const std::string& from,
                 const std::string& to) {
    struct stat source {};
    const KXP::FileDescriptor input = KXP::OpenForRead(from);
    if (!input.IsOpen() || fstat(input.get(), &source) != 0)
        return Fail(OVNX_MEDIA_UNREADABLE, "cannot open", from, std::strerror(errno));
    ClipFile clip;
    // The owner may go on with the clip, also when the source is protected.
    if (!clip.Create(to, (source.st_mode & 0777) | S_IRUSR | S_IWUSR))
        return Fail(OVNX_MEDIA_UNWRITABLE, "cannot write", to, std::strerror(errno));
    if (clip.Replaces(source))
        return Fail(ovsxcodeapi::RemuxSameFile, "cannot cut", from, "the clip would replace it");
    char message[256] = "";
    const OvnxMediaRemuxRequest request{block.start, block.end, block.flags & ovsxcodeapi::RemuxAtKeyframe,
                                        message, sizeof(message)};
    const int32_t status = media.remux()(input.get(), clip.fd(), &request);
    if (status != OVNX_MEDIA_OK) return Fail(status, "cannot cut", from, message);
    if (!clip.Commit()) return Fail(OVNX_MEDIA_UNWRITABLE, "cannot write", to, std::strerror(errno));
    return OVNX_MEDIA_OK;
}

}  // namespace

int32_t Trim(const MediaLibrary& media, const ovsxcodeapi::RemuxParams& params) {
    try {
        const ovsxcodeapi::RemuxBlock& block = BlockOf(params);
        return TrimFile(media, block, TextOf(block.input), TextOf(block.output));
    } catch (const std::exception& error) {
        return Fail(ovsxcodeapi::RemuxBadRecord, "cannot take", "the request", error.what());
    }
}

}  // namespace codelib
