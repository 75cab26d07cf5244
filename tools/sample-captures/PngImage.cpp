#include "sample-captures/PngImage.h"

#include <stdexcept>

#include "sample-captures/MediaBytes.h"
#include "sample-captures/ZlibRuns.h"

namespace samples {
namespace {

using namespace std::string_literals;

// Row filter 1 writes each pixel as its difference from the one to its left, so that a row of one colour
// becomes that colour and zeros.
std::string FilteredRows(uint32_t width, uint32_t height, const Gradient& colours) {
    const std::string zeros((static_cast<size_t>(width) - 1) * 3, '\0');
    std::string rows;
    rows.reserve((zeros.size() + 4) * height);
    for (uint32_t row = 0; row < height; ++row) {
        const Rgb colour = ColourAt(colours, row, height);
        rows += '\1';
        rows += static_cast<char>(colour.red);
        rows += static_cast<char>(colour.green);
        rows += static_cast<char>(colour.blue);
        rows += zeros;
    }
    return rows;
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
    if (width == 0 || height == 0) throw std::invalid_argument("A PNG picture needs a width and a height");
    std::string png = "\x89PNG\r\n\x1A\n";
    // Eight bits, RGB, the only compression and filter method, not interlaced.
    png += PngChunk("IHDR", U32(width) + U32(height) + "\x08\x02\0\0\0"s);
    for (const std::string& chunk : chunks)
        png += chunk;
    png += PngChunk("IDAT", ZlibCompressRuns(FilteredRows(width, height, colours)));
    return png + PngChunk("IEND", "");
}

}  // namespace samples
