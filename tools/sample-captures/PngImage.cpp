#include "sample-captures/PngImage.h"

#include <new>
#include <stdexcept>

#include <zlib.h>

#include "sample-captures/MediaBytes.h"

namespace samples {
namespace {

using namespace std::string_literals;

// Filter 0 leads each row: its bytes as they are.
std::string Rows(uint32_t width, uint32_t height, const Gradient& colours) {
    std::string rows;
    rows.reserve((size_t{width} * 3 + 1) * height);
    for (uint32_t row = 0; row < height; ++row) {
        const Rgb colour = ColourAt(colours, row, height);
        rows += '\0';
        for (uint32_t column = 0; column < width; ++column)
            for (const uint8_t sample : {colour.red, colour.green, colour.blue})
                rows += static_cast<char>(sample);
    }
    return rows;
}

// Filter 2 leads each row: each byte less the one above it, which compresses better.
std::string Rows(const Picture& picture) {
    const size_t stride = size_t{picture.width} * 3;
    const uint8_t* at = &picture.pixels.data()->red;
    std::vector<uint8_t> above(stride);
    std::string rows;
    rows.reserve((stride + 1) * picture.height);
    for (uint32_t row = 0; row < picture.height; ++row, at += stride) {
        rows += '\2';
        for (size_t i = 0; i < stride; ++i)
            rows += static_cast<char>(at[i] - above[i]);
        above.assign(at, at + stride);
    }
    return rows;
}

std::string Compressed(const std::string& bytes) {
    uLongf size = compressBound(bytes.size());
    std::string out(size, '\0');
    if (compress(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
                 bytes.size()) != Z_OK)
        throw std::bad_alloc();
    out.resize(size);
    return out;
}

std::string XmlText(std::string_view text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string XmpPacket(std::string_view creatorTool, std::string_view description) {
    std::string xml =
        "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?>\n"
        "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
        " <rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
        "  <rdf:Description rdf:about=\"\" xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\""
        " xmlns:dc=\"http://purl.org/dc/elements/1.1/\">\n";
    if (!creatorTool.empty()) xml += "   <xmp:CreatorTool>" + XmlText(creatorTool) + "</xmp:CreatorTool>\n";
    if (!description.empty())
        xml += "   <dc:description><rdf:Alt><rdf:li xml:lang=\"x-default\">" + XmlText(description) +
               "</rdf:li></rdf:Alt></dc:description>\n";
    return xml +
           "  </rdf:Description>\n"
           " </rdf:RDF>\n"
           "</x:xmpmeta>\n"
           "<?xpacket end='r'?>";
}

std::string Assembled(uint32_t width, uint32_t height, const std::string& rows,
                      const std::vector<std::string>& chunks) {
    if (width == 0 || height == 0) throw std::invalid_argument("A PNG picture needs a width and a height");
    std::string png = "\x89PNG\r\n\x1A\n";
    // Eight bits, RGB, the only compression and filter method, not interlaced.
    png += PngChunk("IHDR", U32(width) + U32(height) + "\x08\x02\0\0\0"s);
    for (const std::string& chunk : chunks)
        png += chunk;
    png += PngChunk("IDAT", Compressed(rows));
    return png + PngChunk("IEND", "");
}

}  // namespace

std::string PngTextChunk(std::string_view keyword, std::string_view text) {
    return PngChunk("tEXt", std::string(keyword) + '\0' + std::string(text));
}

std::string PngXmpChunk(std::string_view creatorTool, std::string_view description) {
    // The zeros: the keyword's end, not compressed, no method, no language, no translated keyword.
    return PngChunk("iTXt", "XML:com.adobe.xmp\0\0\0\0\0"s + XmpPacket(creatorTool, description));
}

std::string PngImage(uint32_t width, uint32_t height, const Gradient& colours,
                     const std::vector<std::string>& chunks) {
    return Assembled(width, height, Rows(width, height, colours), chunks);
}

std::string PngImage(const Picture& picture, const std::vector<std::string>& chunks) {
    return Assembled(picture.width, picture.height, Rows(picture), chunks);
}

}  // namespace samples
