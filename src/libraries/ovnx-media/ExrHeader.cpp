#include "libraries/ovnx-media/ExrHeader.h"

#include <algorithm>
#include <array>
#include <climits>
#include <set>
#include <string>
#include <string_view>

#include "libraries/media-bytes/ByteView.h"
#include "libraries/ovnx-media/Allowance.h"
#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {
namespace {

constexpr uint64_t kVersionAt = 4;
constexpr uint64_t kFirstHeaderAt = 8;
constexpr uint32_t kHasOnePartTiled = 0x200;
constexpr uint32_t kHasDeepParts = 0x800;
constexpr uint32_t kHasManyParts = 0x1000;

// All headers together, with their preview pictures and without. The rest is short things, each of which
// becomes several times as long in memory.
constexpr uint64_t kMaxHeaderBytes = 16 << 20;
constexpr uint64_t kMaxBytesBesidePreviews = 4 << 20;
constexpr unsigned kMaxNames = 8192;
constexpr size_t kMaxNameLength = 255;
// What is decompressed at once: the lines of one block, or a row of tiles. Decoders keep a few times as much.
constexpr uint64_t kMaxBlockBytes = 48 << 20;
// The decoder keeps a place for each block, as the file does.
constexpr uint64_t kBytesPerBlock = 8;
constexpr int32_t kMaxCoordinate = INT32_MAX / 2;

// Lines that are compressed together, by the method's number.
constexpr std::array<uint32_t, 10> kLinesPerBlock{1, 1, 1, 16, 32, 16, 32, 32, 32, 256};

constexpr const char* kScanLines = "scanlineimage";
constexpr const char* kTiles = "tiledimage";

// The decoder reads these attributes by their type and ignores the size in the file: if the two differed, it
// would find other attributes after them than this reader. It reads types that are not listed by their size.
struct FixedType {
    std::string_view name;
    uint32_t size;
};
constexpr FixedType kFixedTypes[] = {{"box2f", 16},
                                     {"box2i", 16},
                                     {"chromaticities", 32},
                                     {"compression", 1},
                                     {"deepImageState", 1},
                                     {"double", 8},
                                     {"envmap", 1},
                                     {"float", 4},
                                     {"int", 4},
                                     {"keycode", 28},
                                     {"lineOrder", 1},
                                     {"m33d", 72},
                                     {"m33f", 36},
                                     {"m44d", 128},
                                     {"m44f", 64},
                                     {"rational", 8},
                                     {"tiledesc", 9},
                                     {"timecode", 8},
                                     {"v2d", 16},
                                     {"v2f", 8},
                                     {"v2i", 8},
                                     {"v3d", 24},
                                     {"v3f", 12},
                                     {"v3i", 12}};

[[noreturn]] void Refuse(const char* text) {
    throw Failure(OVNX_MEDIA_DAMAGED, text);
}
[[noreturn]] void RefuseAsTooMuch(const char* text) {
    throw Failure(OVNX_MEDIA_OVER_LIMIT, text);
}

class HeaderCursor {
  public:
    explicit HeaderCursor(SourceFile& file) : reader_(file), size_(std::min(file.size(), kMaxHeaderBytes)) {}

    uint64_t position() const { return reader_.position(); }
    void Seek(uint64_t position) { reader_.Seek(position); }
    // Whether that much of the file, and of what headers may take, lies ahead.
    bool Has(uint64_t bytes) const { return position() <= size_ && bytes <= size_ - position(); }

    uint8_t Byte() { return static_cast<uint8_t>(Number(1)); }
    uint32_t Word() { return Number(4); }
    int32_t Integer() { return static_cast<int32_t>(Word()); }
    std::string Name() {
        if (++names_ > kMaxNames) RefuseAsTooMuch("OpenEXR: too many names");
        std::string name;
        while (const uint8_t byte = Byte()) {
            name += static_cast<char>(byte);
            if (name.size() > kMaxNameLength) Refuse("OpenEXR: a name too long");
        }
        return name;
    }
    void Count(uint64_t bytesBesidePreviews) {
        counted_ += bytesBesidePreviews;
        if (counted_ > kMaxBytesBesidePreviews) RefuseAsTooMuch("OpenEXR: headers too long");
    }

  private:
    uint32_t Number(size_t size) {
        char bytes[4];
        if (!Has(size) || !reader_.Read(bytes, size)) Refuse("OpenEXR: a header cut short");
        return media::ByteView({bytes, size}).Little(0, size);
    }

    SourceReader reader_;
    const uint64_t size_;
    unsigned names_ = 0;
    uint64_t counted_ = 0;
};

struct Part {
    std::string type;
    Size size;
    Size tile;
    uint32_t linesPerBlock = 0;
    uint64_t bitsPerPixel = 0;
};

void ReadDataWindow(HeaderCursor& cursor, Part& part) {
    const int32_t left = cursor.Integer();
    const int32_t top = cursor.Integer();
    const int32_t right = cursor.Integer();
    const int32_t bottom = cursor.Integer();
    if (right < left || bottom < top) Refuse("OpenEXR: no pixels");
    if (std::min(left, top) < -kMaxCoordinate || std::max(right, bottom) > kMaxCoordinate)
        RefuseAsTooMuch("OpenEXR: too far out");
    part.size = {static_cast<uint32_t>(right - left) + 1, static_cast<uint32_t>(bottom - top) + 1};
    CheckPixels(part.size);
}

// The bits of one pixel in all channels; subsampled channels count in full.
uint64_t ReadChannels(HeaderCursor& cursor) {
    constexpr uint32_t kHalf = 1;
    uint64_t bits = 0;
    for (std::string name = cursor.Name(); !name.empty(); name = cursor.Name()) {
        bits += cursor.Word() == kHalf ? 16 : 32;
        cursor.Seek(cursor.position() + 12);
    }
    return bits;
}

void ReadTiles(HeaderCursor& cursor, Part& part) {
    part.tile = {cursor.Word(), cursor.Word()};
    if ((cursor.Byte() & 15) != 0) Refuse("OpenEXR: several resolutions");
}

void ReadCompression(HeaderCursor& cursor, Part& part) {
    const uint8_t method = cursor.Byte();
    if (method >= kLinesPerBlock.size()) Refuse("OpenEXR: unknown compression");
    part.linesPerBlock = kLinesPerBlock[method];
}

void ReadType(HeaderCursor& cursor, uint32_t size, Part& part) {
    for (uint32_t i = 0; i < std::min<uint32_t>(size, kMaxNameLength); ++i)
        part.type += static_cast<char>(cursor.Byte());
    if (part.type != kScanLines && part.type != kTiles) Refuse("OpenEXR: not a flat picture");
}

void ReadPreview(HeaderCursor& cursor, uint32_t size) {
    const uint64_t pixels = uint64_t{cursor.Word()} * cursor.Word();
    if (size < 8 || pixels != (size - 8) / 4) Refuse("OpenEXR: a preview of another size");
}

void ReadAttribute(HeaderCursor& cursor, const std::string& name, uint32_t size, Part& part) {
    if (name == "dataWindow") ReadDataWindow(cursor, part);
    if (name == "compression") ReadCompression(cursor, part);
    if (name == "tiles") ReadTiles(cursor, part);
    if (name == "type") ReadType(cursor, size, part);
}

// Reads what the attribute's type defines; leaves the cursor anywhere within it.
void ReadTyped(HeaderCursor& cursor, const std::string& name, const std::string& type, uint32_t size,
               Part& part) {
    const uint64_t end = cursor.position() + size;
    for (const FixedType& fixed : kFixedTypes) {
        if (fixed.name == type && fixed.size != size) Refuse("OpenEXR: an attribute of a wrong size");
    }
    if (type == "floatvector" && size % sizeof(float) != 0) Refuse("OpenEXR: half a number");
    if (type == "preview") return ReadPreview(cursor, size);
    cursor.Count(size);
    if (type == "chlist") {
        const uint64_t bits = ReadChannels(cursor);
        if (cursor.position() != end) Refuse("OpenEXR: channels of a wrong size");
        if (name == "channels") part.bitsPerPixel = bits;
        return;
    }
    ReadAttribute(cursor, name, size, part);
}

// One header and the empty name that ends it. False when there is none, which ends the headers of many parts.
bool ReadPart(HeaderCursor& cursor, Part& part) {
    std::set<std::string> names;
    for (std::string name = cursor.Name(); !name.empty(); name = cursor.Name()) {
        if (!names.insert(name).second) Refuse("OpenEXR: an attribute given twice");
        const std::string type = cursor.Name();
        const uint32_t size = cursor.Word();
        if (!cursor.Has(size)) Refuse("OpenEXR: an attribute cut short");
        const uint64_t end = cursor.position() + size;
        ReadTyped(cursor, name, type, size, part);
        cursor.Seek(end);
    }
    return !names.empty();
}

uint64_t Quotient(uint32_t a, uint32_t b) {
    return (uint64_t{a} + b - 1) / b;
}

// How a single part is stored follows from the version; of many parts each has a type.
bool IsTiled(const Part& part, uint32_t version) {
    if ((version & kHasManyParts) != 0) return part.type == kTiles;
    const bool isTiled = (version & kHasOnePartTiled) != 0;
    if (!part.type.empty() && (part.type == kTiles) != isTiled) Refuse("OpenEXR: of two types");
    return isTiled;
}

// Checks the part against the limits and returns the number of its blocks.
uint64_t CheckPart(const Part& part, uint32_t version) {
    if (part.size.width == 0 || part.bitsPerPixel == 0 || part.linesPerBlock == 0)
        Refuse("OpenEXR: an attribute is missing");
    const uint64_t pixelsPerBlock = kMaxBlockBytes * 8 / part.bitsPerPixel;
    if (!IsTiled(part, version)) {
        if (uint64_t{part.size.width} * part.linesPerBlock > pixelsPerBlock)
            RefuseAsTooMuch("OpenEXR: too much in a block");
        return Quotient(part.size.height, part.linesPerBlock);
    }
    if (part.tile.width == 0 || part.tile.height == 0) Refuse("OpenEXR: empty tiles");
    const uint64_t across = Quotient(part.size.width, part.tile.width);
    if (across * part.tile.width > pixelsPerBlock / part.tile.height)
        RefuseAsTooMuch("OpenEXR: too much in a row of tiles");
    return across * Quotient(part.size.height, part.tile.height);
}

}  // namespace

void CheckExrHeaders(SourceFile& file) {
    HeaderCursor cursor(file);
    cursor.Seek(kVersionAt);
    const uint32_t version = cursor.Word();
    if ((version & kHasDeepParts) != 0) Refuse("OpenEXR: not a flat picture");
    cursor.Seek(kFirstHeaderAt);
    const bool hasMany = (version & kHasManyParts) != 0;
    uint64_t blocks = 0;
    for (Part part; ReadPart(cursor, part); part = {}) {
        blocks += CheckPart(part, version);
        if (!hasMany) break;
    }
    if (blocks == 0) Refuse("OpenEXR: no part");
    if (blocks > file.size() / kBytesPerBlock) Refuse("OpenEXR: more blocks than the file has room for");
}

}  // namespace ovnxmedia
