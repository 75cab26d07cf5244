// Captures as the tools sign them, in as few bytes as the product's inspection looks at.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sample-captures/EngravedBlock.h"
#include "sample-captures/MediaBytes.h"

namespace captures {

using samples::Base64;

// The engraved block around an inner JSON text.
inline std::string Block(std::string_view source, std::string_view inner) {
    return "{\"Source\":\"" + std::string(source) + "\",\"B64\":\"" + Base64(inner) + "\"}";
}

inline std::string PngText(std::string_view keyword, std::string_view value) {
    return samples::PngChunk("tEXt", std::string(keyword) + '\0' + std::string(value));
}

inline std::string PngXmp(std::string_view xml) {
    return samples::PngChunk("iTXt", std::string("XML:com.adobe.xmp\0\0\0en\0\0", 24) + std::string(xml));
}

inline std::string Xmp(std::string_view creatorTool, std::string_view description) {
    return "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"> <rdf:RDF>\n<rdf:Description rdf:about=\"\">"
           "<xmp:CreatorTool>" +
           std::string(creatorTool) +
           "</xmp:CreatorTool>"
           "<dc:description><rdf:Alt><rdf:li xml:lang=\"x-default\"> " +
           std::string(description) +
           "\n </rdf:li></rdf:Alt></dc:description></rdf:Description></rdf:RDF></x:xmpmeta>";
}

// Signature and header of a picture of one pixel, the chunks, and the start of the pixels.
inline std::string Png(std::string_view chunks) {
    return "\x89PNG\r\n\x1A\n" +
           samples::PngChunk("IHDR", samples::U32(1) + samples::U32(1) + std::string("\x08\x02\0\0\0", 5)) +
           std::string(chunks) + samples::PngChunk("IDAT", "pixels");
}

struct ExifEntry {
    uint16_t tag;
    uint32_t count;
    uint32_t offset;  // from the TIFF header
};

constexpr uint32_t kTiffBase = 30;  // where Jpeg puts the TIFF header

// The offset of the first value after the directory of `entries` entries.
constexpr uint32_t ValuesAt(uint32_t entries) {
    return 8 + 2 + 12 * entries + 4;
}

// Three components: the length field of a grey picture reads as a tag to those who scan for tags.
inline std::string FrameHeader(uint16_t height, uint16_t width) {
    return "\xFF\xC0" + samples::U16(17) + "\x08" + samples::U16(height) + samples::U16(width) +
           std::string("\3\1\x22\0\2\x11\0\3\x11\0", 10);
}

// APP0, the Exif segment with its directory and values, the bytes `tail`, and zeros up to 600 bytes.
inline std::string Jpeg(const std::vector<ExifEntry>& entries, std::string_view values,
                        std::string_view tail) {
    std::string tiff =
        std::string("MM\0*", 4) + samples::U32(8) + samples::U16(static_cast<uint16_t>(entries.size()));
    for (const ExifEntry& entry : entries)
        tiff += samples::U16(entry.tag) + samples::U16(2) + samples::U32(entry.count) +
                samples::U32(entry.offset);
    tiff += samples::U32(0) + std::string(values);
    std::string out = "\xFF\xD8\xFF\xE0" + samples::U16(16) + std::string("JFIF\0\1\1\0\0\1\0\1\0\0", 14) +
                      "\xFF\xE1" + samples::U16(static_cast<uint16_t>(tiff.size() + 8)) +
                      std::string("Exif\0\0", 6) + tiff + std::string(tail);
    if (out.size() < 600) out.resize(600);
    return out;
}

// Signed by the maker alone.
inline std::string OwnJpeg(uint16_t height, uint16_t width) {
    return Jpeg({{0x010F, 7, ValuesAt(1)}}, "ZORVEX", FrameHeader(height, width));
}

inline std::string Movie(std::string_view tagc) {
    return samples::Mp4Box("moov", samples::Mp4Box("mvhd", std::string(100, '\0')) +
                                       samples::Mp4Box("udta", samples::Mp4Box("tagc", tagc)));
}

inline std::string FileType() {
    return samples::Mp4Box("ftyp", std::string("isom\0\0\2\0", 8));
}

}  // namespace captures
