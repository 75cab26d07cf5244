#include "plugin-modules/Gallery/src/media/Mp4Walk.h"

#include <algorithm>
#include <optional>

#include "common/results/RetVal.h"

namespace media {
namespace {

using Ending = std::optional<int32_t>;  // the result to leave with, or nothing to go on

constexpr uint64_t kMaxTagSize = 4096;

int32_t Complain(const char* text, int32_t code, SniffResult& result) {
    result.findings.push_back(text);
    return code;
}

Ending ReadExtendedSize(ByteCursor& cursor, uint64_t& payload, SniffResult& result) {
    const ByteView bytes = cursor.Take(8);
    if (bytes.size() == 0) return Complain("Failed to read from MP4 file.", KXP::Code::kFailure, result);
    // Bytes that are missing at the end of the file count as zero.
    char padded[8] = {};
    bytes.text().copy(padded, sizeof(padded));
    const uint64_t size = ByteView({padded, sizeof(padded)}).U64(0);
    if (size < 16)
        return Complain("Malformed MP4 file. Box size less than header overhead with ext size.", kInspected,
                        result);
    payload = size - 16;
    return {};
}

Ending ReadPayloadSize(ByteCursor& cursor, uint32_t size, uint64_t& payload, SniffResult& result) {
    if (size == 1) return ReadExtendedSize(cursor, payload, result);
    if (size < 8) {
        // A size of 0 is a box that runs to the end of the file: unusable here, yet no fault of the file.
        const int32_t code = size == 0 ? kInspected : KXP::Code::kInvalidData;
        return Complain("Malformed MP4 file. Box size less than header overhead.", code, result);
    }
    payload = size - 8;
    return {};
}

const Tag* FindEncodingTag(std::string_view source) {
    for (const Tag& tag : g_mp4EncodingTags)
        if (tag.key == source) return &tag;
    return nullptr;
}

void TakeBlock(std::string_view text, SniffResult& result) {
    const MetadataBlock& block = result.blocks.Read(text);
    const Tag* tag = FindEncodingTag(block.source());
    if (!tag) return;
    result.isOwn = true;
    result.fileSubType = tag->value;
    result.fileSource = tag->value == "Highlight" ? "OVS_SDK" : "OVS_Share";
    block.CopyTo(result);
}

Ending ReadTags(ByteCursor& cursor, uint64_t payload, SniffResult& result) {
    const ByteView text = cursor.Take(static_cast<size_t>(std::min(payload, kMaxTagSize)));
    if (text.size() == 0)
        return Complain("Failed to read box data from MP4 file.", KXP::Code::kFailure, result);
    TakeBlock(text.text(), result);
    return {};
}

}  // namespace

int32_t WalkMp4(ByteCursor& cursor, SniffResult& result) {
    bool movieEntered = false;
    bool userDataEntered = false;
    while (!result.isOwn) {
        const ByteView header = cursor.Take(8);
        if (header.size() < 8) return kInspected;
        const bool isMovie = header.HasAt(4, "moov");
        const bool isUserData = header.HasAt(4, "udta");
        const bool isTags = header.HasAt(4, "tagc");

        uint64_t payload = 0;
        if (const Ending ending = ReadPayloadSize(cursor, header.U32(0), payload, result)) return *ending;
        if ((isMovie && !movieEntered) || (isUserData && !userDataEntered)) payload = 0;
        movieEntered = movieEntered || isMovie;
        userDataEntered = userDataEntered || isUserData;
        if (isTags)
            if (const Ending ending = ReadTags(cursor, payload, result)) return *ending;
        // Counted from the end of the tags that were read, so that it skips as many bytes too many. It has
        // always done so, and a box found in those bytes now would change how existing files are classified.
        cursor.Skip(payload);
        if (cursor.CameShort()) return KXP::Code::kInvalidData;
    }
    return kInspected;
}

}  // namespace media
