#include "gallery-host/Thumbnail.h"

#include <cctype>
#include <charconv>
#include <cstdint>

#include "gallery-host/AtomicFile.h"
#include "gallery-host/Envelope.h"
#include "gallery-host/Verbs.h"

namespace host {
namespace {

constexpr std::string_view kPrefix = "data:image/png;base64,";
constexpr std::string_view kPngSignature = "\x89PNG\r\n\x1a\n";
constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned kMaxSide = 16384;

// RFC 4648, 4: whole groups of four, padded.
std::optional<std::string> DecodeBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    size_t padding = 0;
    while (padding < 2 && !text.empty() && text.back() == '=') {
        text.remove_suffix(1);
        ++padding;
    }
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    uint32_t bits = 0;
    unsigned held = 0;
    for (const char digit : text) {
        const size_t value = kDigits.find(digit);
        if (value == std::string_view::npos) return std::nullopt;
        bits = (bits << 6 | static_cast<uint32_t>(value)) & 0xFFFF;
        held += 6;
        if (held < 8) continue;
        held -= 8;
        bytes.push_back(static_cast<char>(bits >> held & 0xFF));
    }
    return bytes;
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
    std::optional<std::string> png = DecodeBase64(text.substr(kPrefix.size()));
    if (!png || png->compare(0, kPngSignature.size(), kPngSignature) != 0) return std::nullopt;
    return png;
}

void RunThumb(Session& session, Output& output, const ThumbOptions& options) {
    KXP::Document request = MakeTexts({{"file", options.path}});
    request.AddMember("width", options.width, request.GetAllocator());
    request.AddMember("height", options.height, request.GetAllocator());
    const KXP::Document answer = AskForSuccess(session, "GetThumbnail", request);
    // Without one it succeeds as well.
    if (!Find(Payload(answer), "thumbnail"))
        throw Failure(kExitFailed, options.name + ": the plug-in can make no thumbnail of it");
    const std::optional<std::string> png = ReadPngData(Text(Payload(answer), "thumbnail"));
    if (!png) throw Failure(kExitFailed, options.name + ": the plug-in's thumbnail is not a PNG image");
    if (options.out == "-") {
        output.Write(*png);
        return;
    }
    WriteFileAtomically(options.out, *png);
    if (!options.json) return;
    KXP::Document written = MakeTexts({{"file", options.path}, {"thumbnail", options.out}});
    written.AddMember("bytes", static_cast<uint64_t>(png->size()), written.GetAllocator());
    WriteJson(output, written);
}

}  // namespace host
