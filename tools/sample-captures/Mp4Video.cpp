#include "sample-captures/Mp4Video.h"

#include <stdexcept>
#include <vector>

#include "sample-captures/JpegImage.h"
#include "sample-captures/MediaBytes.h"

namespace samples {
namespace {

using namespace std::string_literals;

// Version and flags of a full box.
std::string Full(uint8_t version, uint32_t flags) {
    return U32(static_cast<uint32_t>(version) << 24 | flags);
}

std::string UnityMatrix() {
    const std::string zero = U32(0);
    return U32(0x10000) + zero + zero + zero + U32(0x10000) + zero + zero + zero + U32(0x40000000);
}

std::string MovieHeader(const Mp4Options& options) {
    const std::string times = U32(0) + U32(0);
    return Mp4Box("mvhd", Full(0, 0) + times + U32(options.timeScale) + U32(options.duration) +
                              U32(0x10000) +                                    // rate 1
                              U16(0x100) + std::string(10, '\0') +              // full volume
                              UnityMatrix() + std::string(24, '\0') + U32(2));  // the next track's number
}

std::string TrackHeader(const Mp4Options& options) {
    constexpr uint32_t kEnabledInMovieAndPreview = 7;
    const std::string times = U32(0) + U32(0);
    return Mp4Box("tkhd", Full(0, kEnabledInMovieAndPreview) + times + U32(1) + U32(0) +
                              U32(options.duration) + std::string(16, '\0') + UnityMatrix() +
                              U32(static_cast<uint32_t>(options.width) << 16) +
                              U32(static_cast<uint32_t>(options.height) << 16));
}

std::string Descriptor(char tag, const std::string& data) {
    return std::string(1, tag) + static_cast<char>(data.size()) + data;
}

// The descriptors of ISO/IEC 14496-1 that say "each sample is a JPEG".
std::string ElementaryStream() {
    constexpr char kJpeg = 0x6C;
    constexpr char kVisual = 0x11;
    const std::string rates(3 + 4 + 4, '\0');  // buffer size, largest and mean bit rate: unknown
    const std::string decoder = Descriptor(4, std::string{kJpeg, kVisual} + rates);
    return Mp4Box("esds", Full(0, 0) + Descriptor(3, "\0\0\0"s + decoder + Descriptor(6, "\2")));
}

std::string SampleDescription(const Mp4Options& options) {
    const std::string entry = std::string(6, '\0') + U16(1) + std::string(16, '\0') + U16(options.width) +
                              U16(options.height) + U32(0x480000) + U32(0x480000) +  // 72 dots per inch
                              U32(0) + U16(1) + std::string(32, '\0') + U16(24) + U16(0xFFFF);
    return Mp4Box("stsd", Full(0, 0) + U32(1) + Mp4Box("mp4v", entry + ElementaryStream()));
}

// The last frame takes what the even share leaves over.
std::string FrameTimes(const Mp4Options& options) {
    const uint32_t share = options.duration / options.frames;
    const uint32_t others = options.frames - 1;
    const std::string last = U32(1) + U32(options.duration - share * others);
    if (others == 0) return Mp4Box("stts", Full(0, 0) + U32(1) + last);
    return Mp4Box("stts", Full(0, 0) + U32(2) + U32(others) + U32(share) + last);
}

std::string FrameSizes(const std::vector<std::string>& frames) {
    std::string sizes = Full(0, 0) + U32(0) + U32(static_cast<uint32_t>(frames.size()));
    for (const std::string& frame : frames)
        sizes += U32(static_cast<uint32_t>(frame.size()));
    return Mp4Box("stsz", sizes);
}

// All frames are one chunk.
std::string SampleTable(const Mp4Options& options, const std::vector<std::string>& frames,
                        uint32_t chunkOffset) {
    return Mp4Box("stbl", SampleDescription(options) + FrameTimes(options) +
                              Mp4Box("stsc", Full(0, 0) + U32(1) + U32(1) + U32(options.frames) + U32(1)) +
                              FrameSizes(frames) + Mp4Box("stco", Full(0, 0) + U32(1) + U32(chunkOffset)));
}

std::string Media(const Mp4Options& options, const std::vector<std::string>& frames, uint32_t chunkOffset) {
    constexpr uint16_t kUndetermined = 0x55C4;  // the language "und"
    const std::string times = U32(0) + U32(0);
    const std::string header = Mp4Box("mdhd", Full(0, 0) + times + U32(options.timeScale) +
                                                  U32(options.duration) + U16(kUndetermined) + U16(0));
    const std::string handler =
        Mp4Box("hdlr", Full(0, 0) + U32(0) + "vide" + std::string(12, '\0') + "Video\0"s);
    constexpr uint32_t kInThisFile = 1;
    const std::string data =
        Mp4Box("dinf", Mp4Box("dref", Full(0, 0) + U32(1) + Mp4Box("url ", Full(0, kInThisFile))));
    return Mp4Box("mdia", header + handler +
                              Mp4Box("minf", Mp4Box("vmhd", Full(0, 1) + U64(0)) + data +
                                                 SampleTable(options, frames, chunkOffset)));
}

std::string Movie(const Mp4Options& options, const std::vector<std::string>& frames, uint32_t chunkOffset) {
    std::string movie =
        MovieHeader(options) + Mp4Box("trak", TrackHeader(options) + Media(options, frames, chunkOffset));
    if (!options.tagc.empty()) movie += Mp4Box("udta", Mp4Box("tagc", options.tagc));
    return Mp4Box("moov", movie);
}

std::vector<std::string> Frames(const Mp4Options& options, const Gradient& colours) {
    std::vector<std::string> frames;
    for (uint32_t frame = 0; frame < options.frames; ++frame) {
        const Rgb top = ColourAt(colours, frame, options.frames);
        frames.push_back(JpegImage(options.width, options.height, {top, colours.bottom}));
    }
    return frames;
}

}  // namespace

std::string Mp4Video(const Mp4Options& options, const Gradient& colours) {
    if (options.timeScale == 0) throw std::invalid_argument("An MP4 needs a time scale");
    if (options.frames == 0 || options.duration < options.frames)
        throw std::invalid_argument("An MP4 needs frames, and a unit of time for each");
    const std::vector<std::string> frames = Frames(options, colours);
    std::string data;
    for (const std::string& frame : frames)
        data += frame;

    const std::string type = Mp4Box("ftyp", "isom" + U32(0x200) + "isommp41");
    const std::string mdat = Mp4Box("mdat", data);
    constexpr size_t kBoxHeader = 8;
    size_t chunkOffset = type.size() + kBoxHeader;
    // The offset has one size whatever its value, so a moov made with a wrong one shows how long it will be.
    if (!options.moovBehind) chunkOffset += Movie(options, frames, 0).size();
    const std::string moov = Movie(options, frames, static_cast<uint32_t>(chunkOffset));
    return options.moovBehind ? type + mdat + moov : type + moov + mdat;
}

}  // namespace samples
