// Captures as the tools sign them, in as few bytes as the product's inspection looks at.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "sample-captures/EngravedBlock.h"
#include "sample-captures/JpegImage.h"
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

// Signature and header of a picture of one pixel, the chunks, and the start of the pixels.
inline std::string Png(std::string_view chunks) {
    return "\x89PNG\r\n\x1A\n" +
           samples::PngChunk("IHDR", samples::U32(1) + samples::U32(1) + std::string("\x08\x02\0\0\0", 5)) +
           std::string(chunks) + samples::PngChunk("IDAT", "pixels");
}

// Signed by the maker alone.
inline std::string OwnJpeg() {
    samples::ExifTexts texts;
    texts.make = "ZORVEX";
    return samples::JpegImage(16, 9, {}, texts);
}

inline std::string Movie(std::string_view tagc) {
    return samples::Mp4Box("moov", samples::Mp4Box("mvhd", std::string(100, '\0')) +
                                       samples::Mp4Box("udta", samples::Mp4Box("tagc", tagc)));
}

inline std::string FileType() {
    return samples::Mp4Box("ftyp", std::string("isom\0\0\2\0", 8));
}

}  // namespace captures
