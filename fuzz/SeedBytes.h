// Pictures for seeds, down to the entries of a directory and the elements of a packet: what a reader may meet
// and no capture tool writes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sample-captures/MediaBytes.h"

namespace seeds {

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

}  // namespace seeds
