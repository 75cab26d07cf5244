#include "importing/PngMarks.h"

#include <algorithm>
#include <string_view>

#include "libraries/media-bytes/ByteView.h"
#include "plugin-modules/Gallery/src/media/PngChunks.h"

namespace importing {
namespace {

// More than any encoder makes of a picture that a gallery shows; a file of nothing but headers must not take
// minutes.
constexpr int kMaxChunks = 4000000;
constexpr uint64_t kMaxChunk = 0x7FFFFFFF;

// A private chunk that decoders pass over. With it what follows lies as in the source against the pages of
// memory and the blocks of the disk, which halves the time to copy it and lets volumes share it.
constexpr std::string_view kPaddingType = "zvFl";
constexpr size_t kPage = 4096;

struct Chunk {
    std::string type;
    uint64_t from = 0;
    uint64_t to = 0;

    // What decoders need for the pixels: whatever is critical, the transparency, and the frames of an
    // animation.
    bool IsPicture() const {
        const bool isCritical = (type[0] & 0x20) == 0;
        return isCritical || type == "tRNS" || type == "acTL" || type == "fcTL" || type == "fdAT";
    }
};

Chunk ReadChunk(media::ByteSource& source, uint64_t at, uint64_t size) {
    char header[8];
    if (source.ReadAt(at, header, sizeof header) < sizeof header) throw ImportError("is cut off");
    const media::ByteView view({header, sizeof header});
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    const uint64_t length = view.U32(0);
    Chunk chunk{view.Sub(4).str(), at, at + media::kPngChunkFrame + length};
    if (!std::all_of(chunk.type.begin(), chunk.type.end(), isLetter) || length > kMaxChunk)
        throw ImportError("is damaged");
    if (chunk.to > size) throw ImportError("is cut off");
    return chunk;
}

std::string TextChunks(const CaptureMarks& marks) {
    std::string chunks;
    media::AppendPngText(chunks, "Software", SoftwareOf(marks));
    media::AppendPngText(chunks, "DRSName", marks.game);
    media::AppendPngText(chunks, "Description", BlockOf(marks));
    const size_t part = (chunks.size() + media::kPngChunkFrame) % kPage;
    media::AppendPngChunk(chunks, kPaddingType, std::string(part == 0 ? 0 : kPage - part, '\0'));
    return chunks;
}

}  // namespace

Splice MarkPng(media::ByteSource& source, uint64_t size, const CaptureMarks& marks) {
    char signature[media::kPngSignature.size()];
    const size_t read = source.ReadAt(0, signature, sizeof signature);
    if (std::string_view(signature, read) != media::kPngSignature) throw ImportError("is no PNG");
    Splice splice;
    bool hasPixels = false;
    uint64_t at = media::kPngSignature.size();
    splice.Copy(0, at, true);
    for (int count = 0; count < kMaxChunks; ++count) {
        const Chunk chunk = ReadChunk(source, at, size);
        if ((count == 0) != (chunk.type == "IHDR")) throw ImportError("is damaged");
        splice.Copy(chunk.from, chunk.to, chunk.IsPicture());
        // Readers look at the first seven chunks, and nothing may precede the header.
        if (count == 0) splice.Add(TextChunks(marks));
        hasPixels = hasPixels || chunk.type == "IDAT";
        at = chunk.to;
        if (chunk.type != "IEND") continue;
        if (!hasPixels) throw ImportError("has no picture");
        splice.Copy(at, size, false);
        return splice;
    }
    throw ImportError("has too many parts");
}

}  // namespace importing
