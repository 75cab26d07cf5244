// Headers of pictures at the limits of their readers, and labelled thumbnails.
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "fuzz/ExrAttributes.h"
#include "fuzz/SeedCorpus.h"
#include "sample-captures/MediaBytes.h"
#include "tests/support/CaptureBytes.h"

namespace {

using samples::U16;

std::string Joined(std::initializer_list<std::string_view> parts) {
    std::string all;
    for (const std::string_view part : parts)
        all += part;
    return all;
}

std::string Little(uint32_t value) {
    const std::string big = samples::U32(value);
    return {big.rbegin(), big.rend()};
}

std::string Attribute(const std::string& name, const std::string& type, const std::string& data) {
    return name + '\0' + type + '\0' + Little(static_cast<uint32_t>(data.size())) + data;
}

constexpr uint32_t kHalf = 1;
constexpr uint32_t kBitsPerPixel = 48;
constexpr uint32_t kMostPixels = (uint32_t{48} << 20) / kBitsPerPixel * 8;
constexpr uint32_t kLines[] = {1, 1, 1, 16, 32, 16, 32, 32, 32, 256};

std::string Part(uint32_t width, uint32_t height, uint32_t method, const std::string& more = {},
                 uint32_t kind = kHalf) {
    std::string channels;
    for (const char* name : {"B", "G", "R"})
        channels += name + std::string(1, '\0') + Little(kind) + std::string(4, '\0') + Little(1) + Little(1);
    const std::string window =
        Little(static_cast<uint32_t>(-5)) + Little(3) + Little(width - 6) + Little(height + 2);
    return Attribute("channels", "chlist", channels + '\0') +
           Attribute("compression", "compression", std::string(1, static_cast<char>(method))) +
           Attribute("dataWindow", "box2i", window) + more;
}

// Filled up to a size, as each block needs eight bytes of the file.
std::string Exr(const std::string& parts, uint32_t version = 2, size_t size = 0) {
    std::string file = "\x76\x2F\x31\x01" + Little(version) + parts + '\0';
    if (file.size() < size) file.resize(size);
    return file;
}

std::string Tiles(uint32_t width, uint32_t height, char mode = '\0') {
    return Attribute("tiles", "tiledesc", Little(width) + Little(height) + mode);
}

void AddExrLimits(Corpus& corpus) {
    for (uint32_t method = 0; method < std::size(kLines); ++method) {
        const size_t size = (Exr(Part(4, 4, method)).size() + 7) / 8 * 8;
        const auto lines = static_cast<uint32_t>(size / 8) * kLines[method];
        for (const uint32_t more : {0, 1}) {
            corpus.Add(Exr(Part(4, lines + more, method), 2, size));
            corpus.Add(Exr(Part(kMostPixels / kLines[method] + more, 1, method)));
        }
    }
    // As far out as may be, and one pixel further.
    for (const uint32_t more : {0, 1}) {
        std::string file = Exr(Part(9, 9, 0), 2, 400);
        const size_t window = file.find("box2i") + 10;
        constexpr uint32_t kFar = INT32_MAX / 2;
        corpus.Add(
            file.replace(window, 4, Little(kFar - 8 + more)).replace(window + 8, 4, Little(kFar + more)));
        corpus.Add(file.replace(window, 4, Little(-kFar - more)).replace(window + 8, 4, Little(-kFar + 8)));
    }
    corpus.Add(Exr(Part(9, 9, std::size(kLines))));
    corpus.Add(Exr(Part(9, 9, 3, {}, 2)));
    corpus.Add(Exr(Part(1 << 30, 1, 0)));
    for (const uint32_t height : {8192, 8193})
        corpus.Add(Exr(Part(8192, height, 9), 2, 400));
    const uint32_t tiled[][4] = {{64, 64, 128, 128},     {64, 64, 129, 64},     {4096, 2048, 4000, 10},
                                 {4096, 2049, 4000, 10}, {64, 64, 64, 64 * 30}, {64, 64, 64, 64 * 60}};
    for (const auto& [across, down, width, height] : tiled)
        corpus.Add(Exr(Part(width, height, 3, Tiles(across, down)), 0x202, 320));
    corpus.Add(Exr(Part(64, 64, 3, Tiles(64, 64, '\1')), 0x202));
    corpus.Add(Exr(Part(64, 64, 3, Tiles(64, 0)), 0x202));
}

void AddExrAttributes(Corpus& corpus) {
    std::string all;
    for (const auto& [type, size] : fuzz::kExrAttributeSizes)
        all += Attribute(std::string("a") + type, type, std::string(size, '\0'));
    const std::string scanLines = Attribute("type", "string", "scanlineimage");
    const std::string tiles = Attribute("type", "string", "tiledimage");
    corpus.Add(Exr(Part(9, 9, 3, all)));
    for (const size_t size : {7, 8})
        corpus.Add(Exr(Part(9, 9, 3, Attribute("f", "floatvector", std::string(size, '\0')))));
    for (const size_t size : {8, 9, 12})
        corpus.Add(
            Exr(Part(9, 9, 3, Attribute("p", "preview", Little(1) + Little(2) + std::string(size, '\0')))));
    for (const std::string& type : {scanLines, tiles})
        corpus.Add(Exr(Part(64, 64, 3, type)));
    corpus.Add(Exr(Part(9, 9, 3, scanLines) + '\0' + Part(9, 9, 0, tiles + Tiles(8, 8)) + '\0', 0x1002));
}

std::string Segment(unsigned marker, const std::string& content) {
    return '\xFF' + std::string(1, static_cast<char>(marker)) +
           U16(static_cast<uint16_t>(content.size() + 2)) + content;
}

std::string Frame(unsigned components, unsigned described) {
    std::string frame = "\x08" + U16(10) + U16(20) + static_cast<char>(components);
    for (unsigned i = 0; i < described; ++i)
        frame += std::string("\1\x11\0", 3);
    return frame;
}

void AddJpegMarkers(Corpus& corpus) {
    const std::string start = "\xFF\xD8";
    const std::string scan = Segment(0xDA, std::string("\1\1\0\0\x3F\0", 6));
    for (const unsigned marker : {0xBF, 0xC4, 0xC8, 0xCC, 0xD0, 0xDB, 0xE0, 0xFE})
        corpus.Add(Joined({start, Segment(marker, Frame(1, 1)), Segment(0xC0, Frame(3, 3)), scan}));
    for (unsigned marker = 0xC0; marker < 0xD0; ++marker)
        corpus.Add(Joined({start, Segment(marker, Frame(1, 1)), scan, "\xFF\xD9"}));
    const std::pair<unsigned, unsigned> frames[] = {{1, 2}, {3, 2}, {0, 1}, {0, 0}};
    for (const auto& [components, described] : frames)
        corpus.Add(Joined({start, Segment(0xC0, Frame(components, described)), scan}));
    const std::string frame = Segment(0xC0, Frame(1, 1));
    corpus.Add(Joined({start, frame, scan, scan}));
    corpus.Add(Joined({start, frame, Segment(0xDA, "")}));
    corpus.Add(Joined({start, scan, frame}));
    corpus.Add(Joined({start, frame, "\xFF\xD9", scan}));
    corpus.Add(Joined({start, frame, scan.substr(0, 6)}));
    corpus.Add(Joined({start, Segment(0xC0, Frame(1, 1).substr(0, 5)), scan}));
}

}  // namespace

void AddPictureHeads(Corpus& corpus) {
    AddExrLimits(corpus);
    AddExrAttributes(corpus);
    AddJpegMarkers(corpus);
}

void AddLabelledPngs(Corpus& corpus) {
    using samples::PngChunk;
    const std::string whole = captures::Png("");
    const std::string head = whole.substr(0, 33);
    const std::string end = PngChunk("IEND", "");
    corpus.Add(whole + 'x');
    corpus.Add('x' + whole.substr(1));
    for (const size_t size : {32, 33, 50, 1000})
        corpus.Add(whole.substr(0, size));
    for (const std::string& chunk :
         {std::string(), PngChunk("IEND", "x"), end + std::string(12, '\0'),
          std::string("\xFF\xFF\xFF\xF4IDAT", 8), std::string("\0\0\0\1IDAT", 8), PngChunk("iTXt", "Path"),
          PngChunk("iTXt", std::string("Path\0\0\0\0\0/g/b.png", 17)),
          PngChunk("iTXt", std::string("Path\0\0\0\0x/g/b", 13)),
          PngChunk("tEXt", std::string("Path\0\0\0\0\0/g/b", 13))})
        corpus.Add(Joined({head, chunk, end}));
}
