// PNG pictures made in code, with the text chunks by which a capture tool signs its work.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sample-captures/Gradient.h"

namespace samples {

// A tEXt chunk. https://www.w3.org/TR/png/#11tEXt
std::string PngTextChunk(std::string_view keyword, std::string_view text);

// An iTXt chunk holding an XMP packet with xmp:CreatorTool and dc:description. An empty text leaves its
// element out.
std::string PngXmpChunk(std::string_view creatorTool, std::string_view description);

// A picture of 8-bit RGB. `chunks` are whole chunks, inserted between IHDR and IDAT in this order.
// Throws std::invalid_argument when a side is zero.
std::string PngImage(uint32_t width, uint32_t height, const Gradient& colours,
                     const std::vector<std::string>& chunks = {});

// The same of any picture.
std::string PngImage(const Picture& picture, const std::vector<std::string>& chunks = {});

}  // namespace samples
