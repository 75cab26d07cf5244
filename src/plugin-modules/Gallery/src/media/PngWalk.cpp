#include "plugin-modules/Gallery/src/media/PngWalk.h"

#include "plugin-modules/Gallery/src/media/XMPMeta.h"

namespace media {
namespace {

constexpr std::string_view kSignature = "\x89PNG\r\n\x1A\n";
constexpr std::string_view kXmpKeyword = "XML:com.adobe.xmp";
constexpr int kMaxChunks = 7;
constexpr uint32_t kMaxChunkLength = 4096;
constexpr uint64_t kCrcSize = 4;

void ApplySource(const Tag& tag, SniffResult& result) {
    result.isOwn = true;
    result.fileSource = tag.value;
    if (tag.value == "OVS_SDK")
        result.fileSubType = "Highlight";
    else if (tag.value == "OVS_Lumis")
        result.fileSubType = "Normal_Lumis";
    else
        result.fileSubType = "Normal";
}

// By prefix: tools append their version to the name.
bool TakeSource(ByteView software, SniffResult& result) {
    for (const Tag& tag : g_zvSourceTags) {
        if (!software.StartsWith(tag.key)) continue;
        ApplySource(tag, result);
        return true;
    }
    return false;
}

// `sourceSettled` goes on from chunk to chunk.
void TakeText(ByteView data, bool& sourceSettled, SniffResult& result) {
    if (!sourceSettled && data.size() == 13 && data.StartsWith("Source")) {
        // Settled whatever it says: the first such chunk speaks for the file.
        sourceSettled = true;
        if (!data.HasAt(7, "ZORVEX")) return;
        result.fileSubType = "StandAlone_Lumis";
        result.isOwn = true;
    } else if (data.StartsWith("Software")) {
        if (TakeSource(data.Sub(9), result)) sourceSettled = true;
    } else if (data.StartsWith("DRSName")) {
        result.drsName = data.Sub(8).text();
    } else if (data.StartsWith("DRSProfileName")) {
        result.drsProfileName = data.Sub(15).text();
    } else if (data.StartsWith("Description")) {
        if (data.size() >= 13) result.blocks.Read(data.Sub(12).text()).CopyTo(result);
    }
}

// The text after the header of an iTXt chunk: keyword, two bytes on compression, and the language tag and
// the translated keyword, each ended by a NUL.
ByteView InternationalText(ByteView data) {
    size_t at = kXmpKeyword.size() + 3;
    for (int names = 0; names < 2; ++names) {
        const size_t nul = data.text().find('\0', at);
        if (nul == std::string_view::npos) return {};
        at = nul + 1;
    }
    return data.Sub(at);
}

void TakeXmp(ByteView data, bool& sourceSettled, SniffResult& result) {
    if (!data.StartsWith(kXmpKeyword)) return;
    XMPMeta xmp(InternationalText(data).text());
    std::string value;
    for (const char* tag : {"x:xmpmeta", "rdf:RDF", "rdf:Description", "xmp:CreatorTool"})
        xmp.Descend(tag);
    if (xmp.GetCurrentString(value) == 0 && TakeSource(ByteView(value), result)) sourceSettled = true;

    xmp.Rewind();
    for (const char* tag : {"x:xmpmeta", "rdf:RDF", "rdf:Description", "dc:description", "rdf:Alt", "rdf:li"})
        xmp.Descend(tag);
    if (xmp.GetCurrentString(value) == 0) result.blocks.Read(value).CopyTo(result);
}

}  // namespace

int32_t WalkPng(ByteCursor& cursor, SniffResult& result) {
    if (!cursor.Take(kSignature.size()).StartsWith(kSignature)) return kInspected;
    bool sourceSettled = false;
    for (int chunk = 0; chunk < kMaxChunks; ++chunk) {
        const ByteView header = cursor.Take(8);
        if (header.size() < 8 || header.HasAt(4, "IDAT")) break;
        const uint32_t length = header.U32(0);
        const bool isText = header.HasAt(4, "tEXt");
        if (length > kMaxChunkLength || (!isText && !header.HasAt(4, "iTXt"))) {
            cursor.Skip(length + kCrcSize);
            continue;
        }
        const ByteView data = cursor.Take(length);
        if (data.size() < length) break;
        if (isText)
            TakeText(data, sourceSettled, result);
        else
            TakeXmp(data, sourceSettled, result);
        cursor.Skip(kCrcSize);
    }
    return kInspected;
}

}  // namespace media
