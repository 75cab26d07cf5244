#include "gallery-host/verbs/Thumbnail.h"

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <system_error>

#include <sys/stat.h>

#include "base/NewFile.h"
#include "base/ReadWrite.h"
#include "common/text/Base64.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/verbs/Verbs.h"

namespace host {
namespace {

constexpr std::string_view kPrefix = "data:image/png;base64,";
constexpr std::string_view kPngSignature = "\x89PNG\r\n\x1a\n";
constexpr unsigned kMaxSide = 16384;
constexpr unsigned kOrdinaryMode = 0666;

// The path holds the old file or the whole new one. Refuses anything but an ordinary file, because a device,
// say, would be replaced.
void WriteImage(const std::string& path, const std::string& png) {
    const auto fail = [&](const std::string& why) {
        throw Failure(kExitFailed, "cannot write " + path + ": " + why);
    };
    struct stat there {};
    if (stat(path.c_str(), &there) == 0 && !S_ISREG(there.st_mode)) fail("it is not an ordinary file");
    KXP::NewFile file(path, kOrdinaryMode);
    if (!file.IsOpen() || !KXP::WriteFully(file.descriptor(), png) || !file.PutOver(KXP::Durability::Content))
        fail(std::strerror(errno));
}

}  // namespace

std::optional<ThumbSize> ReadThumbSize(const std::string& text) {
    ThumbSize size{};
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    if (width.ec != std::errc() || width.ptr == end || *width.ptr != 'x') return std::nullopt;
    const auto height = std::from_chars(width.ptr + 1, end, size.height);
    if (height.ec != std::errc() || height.ptr != end) return std::nullopt;
    const auto fits = [](unsigned side) { return side >= 1 && side <= kMaxSide; };
    if (!fits(size.width) || !fits(size.height)) return std::nullopt;
    return size;
}

std::optional<std::string> ReadPngData(std::string_view text) {
    if (text.substr(0, kPrefix.size()) != kPrefix) return std::nullopt;
    std::string png;
    if (!KXP::DecodeBase64(text.substr(kPrefix.size()), png)) return std::nullopt;
    if (png.compare(0, kPngSignature.size(), kPngSignature) != 0) return std::nullopt;
    return png;
}

void RunThumb(Session& session, Output& output, const ThumbOptions& options) {
    KXP::Document request = MakeTexts({{"file", options.path}});
    request.AddMember("width", options.width, request.GetAllocator());
    request.AddMember("height", options.height, request.GetAllocator());
    const KXP::Document answer = AskForSuccess(session, "GetThumbnail", request);
    // The request also succeeds without a thumbnail.
    if (!Find(Payload(answer), "thumbnail"))
        throw Failure(kExitFailed, options.name + ": the plug-in can make no thumbnail of it");
    const std::optional<std::string> png = ReadPngData(Text(Payload(answer), "thumbnail"));
    if (!png) throw Failure(kExitFailed, options.name + ": the plug-in's thumbnail is not a PNG image");
    if (options.out == "-") {
        output.Write(*png);
        return;
    }
    WriteImage(options.out, *png);
    if (!options.json) return;
    KXP::Document written = MakeTexts({{"file", options.path}, {"thumbnail", options.out}});
    written.AddMember("bytes", static_cast<uint64_t>(png->size()), written.GetAllocator());
    WriteJson(output, written);
}

}  // namespace host
