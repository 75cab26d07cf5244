// The headers by which pictures are refused before a library decodes them, without the decoding: an
// OpenEXR's and a JPEG's, each against a plain walk.
#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "fuzz/ExrAttributes.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Plain.h"
#include "libraries/ovnx-media/ExrHeader.h"
#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/JpegHeader.h"

namespace {

using plain::At;
using plain::Big;
using plain::Demand;

struct Found {
    std::string_view frame;
    unsigned scans = 0;
};

// Nothing for a file that is refused.
std::optional<Found> Walk(std::string_view file) {
    Found found;
    for (size_t at = 0; at + 1 < file.size();) {
        const auto marker = static_cast<unsigned char>(file[at + 1]);
        const bool isAlone = marker <= 1 || (marker >= 0xD0 && marker <= 0xD8);
        if (file[at] != '\xFF' || marker == 0xFF || isAlone) {
            at += file[at] == '\xFF' && isAlone ? 2 : 1;
            continue;
        }
        const std::string_view length = At(file, at + 2, 2);
        if (marker == 0xD9 || length.size() < 2 || Big(length) < 2 || Big(length) > file.size() - at - 2)
            break;
        const std::string_view content = At(file, at + 4, Big(length) - 2);
        if (marker >= 0xC0 && marker <= 0xCF && (marker == 0xC0 || marker % 4 != 0)) {
            const uint64_t components = Big(At(content, 5, 1));
            if (!found.frame.empty() || components == 0 || content.size() != 6 + 3 * components) return {};
            found.frame = content;
        } else if (marker == 0xDA) {
            if (found.frame.empty() || content.empty()) return {};
            ++found.scans;
        }
        at += 2 + Big(length);
    }
    return found.scans > 0 ? std::optional(found) : std::nullopt;
}

void CheckJpeg(const uint8_t* data, size_t size) {
    const std::optional<Found> expected = Walk({reinterpret_cast<const char*>(data), size});
    ovnxmedia::FileBytes file;
    file.Reserve(size);
    file.size = size;
    std::copy_n(data, size, file.bytes.get());
    try {
        const ovnxmedia::JpegHeader header = ovnxmedia::ReadJpegHeader(file);
        Demand(expected && header.scans == expected->scans);
        Demand(header.size.height == Big(expected->frame.substr(1, 2)));
        Demand(header.size.width == Big(expected->frame.substr(3, 2)));
        Demand(header.components == Big(expected->frame.substr(5, 1)));
    } catch (const ovnxmedia::Failure&) {
        Demand(!expected);
    }
}

// What is wrong anywhere in an OpenEXR's headers.
struct Wrong {};

void Ensure(bool holds) {
    if (!holds) throw Wrong();
}

uint32_t Little(std::string_view bytes) {
    uint32_t value = 0;
    for (size_t i = bytes.size(); i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

struct Cursor {
    std::string_view file;
    uint64_t at = 0;

    std::string_view Take(uint64_t count) {
        const std::string_view bytes = At(file, at, count);
        Ensure(bytes.size() == count);
        at += count;
        return bytes;
    }
    uint32_t Word() { return Little(Take(4)); }
    std::string Name() {
        std::string name;
        for (char c = Take(1)[0]; c != '\0'; c = Take(1)[0])
            name += c;
        Ensure(name.size() <= 255);
        return name;
    }
};

struct Part {
    std::map<std::string, std::pair<std::string, uint64_t>> attributes;  // their types and places
    uint64_t bits = 0;
    std::string type;
};

const std::map<std::string, uint32_t> kSizes(std::begin(fuzz::kExrAttributeSizes),
                                             std::end(fuzz::kExrAttributeSizes));

void ReadAttribute(Cursor cursor, const std::string& name, const std::string& type, uint32_t size,
                   Part& part) {
    const uint64_t end = cursor.at + size;
    Ensure(kSizes.count(type) == 0 || kSizes.at(type) == size);
    Ensure(type != "floatvector" || size % 4 == 0);
    if (type == "preview") {
        Ensure(size >= 8);
        const uint64_t width = cursor.Word();
        Ensure(width * cursor.Word() == (size - 8) / 4);
    } else if (type == "chlist") {
        uint64_t bits = 0;
        while (!cursor.Name().empty()) {
            bits += cursor.Word() == 1 ? 16 : 32;
            cursor.at += 12;
        }
        Ensure(cursor.at == end);
        if (name == "channels") part.bits = bits;
    } else if (name == "type") {
        part.type = cursor.Take(std::min<uint32_t>(size, 255));
        Ensure(part.type == "scanlineimage" || part.type == "tiledimage");
    } else {
        part.attributes[name] = {type, cursor.at};
    }
}

// False for an empty header.
bool ReadPart(Cursor& cursor, Part& part) {
    std::set<std::string> names;
    for (std::string name = cursor.Name(); !name.empty(); name = cursor.Name()) {
        Ensure(names.insert(name).second);
        const std::string type = cursor.Name();
        const uint32_t size = cursor.Word();
        Ensure(size <= cursor.file.size() - cursor.at);
        ReadAttribute(cursor, name, type, size, part);
        cursor.at += size;
    }
    return !names.empty();
}

// The number of blocks.
uint64_t CheckPart(std::string_view file, const Part& part, uint32_t version) {
    using Wide = unsigned __int128;
    constexpr Wide kMost = Wide{48} << 23;  // bits that are decompressed at once
    const auto cursor = [&](const char* name) {
        const auto found = part.attributes.find(name);
        return found == part.attributes.end() ? std::optional<Cursor>() : Cursor{file, found->second.second};
    };
    std::optional<Cursor> window = cursor("dataWindow");
    std::optional<Cursor> compression = cursor("compression");
    std::optional<Cursor> tiles = cursor("tiles");
    uint64_t tile[2] = {0, 0};
    if (tiles) {
        for (uint64_t& side : tile)
            side = tiles->Word();
        Ensure((tiles->Take(1)[0] & 15) == 0);
    }
    Ensure(window && compression && part.bits > 0);
    int64_t corners[4];
    for (int64_t& corner : corners)
        corner = static_cast<int32_t>(window->Word());
    for (const int64_t corner : corners)
        Ensure(corner >= -(INT32_MAX / 2) && corner <= INT32_MAX / 2);
    Ensure(corners[2] >= corners[0] && corners[3] >= corners[1]);
    const auto width = static_cast<uint64_t>(corners[2] - corners[0] + 1);
    const auto height = static_cast<uint64_t>(corners[3] - corners[1] + 1);
    Ensure(Wide{width} * height <= OVNX_MEDIA_MAX_PIXELS);
    constexpr unsigned kLines[] = {1, 1, 1, 16, 32, 16, 32, 32, 32, 256};
    const auto method = static_cast<unsigned char>(compression->Take(1)[0]);
    Ensure(method < std::size(kLines));
    const bool areMany = (version & 0x1000) != 0;
    const bool isTiled = areMany ? part.type == "tiledimage" : (version & 0x200) != 0;
    Ensure(areMany || part.type.empty() || (part.type == "tiledimage") == isTiled);
    if (!isTiled) {
        Ensure(Wide{width} * kLines[method] * part.bits <= kMost);
        return (height + kLines[method] - 1) / kLines[method];
    }
    Ensure(tile[0] > 0 && tile[1] > 0);
    const uint64_t across = (width + tile[0] - 1) / tile[0];
    Ensure(Wide{across} * tile[0] * tile[1] * part.bits <= kMost);
    return across * ((height + tile[1] - 1) / tile[1]);
}

bool IsFine(std::string_view file) {
    try {
        Cursor cursor{file, 4};
        const uint32_t version = cursor.Word();
        Ensure((version & 0x800) == 0);
        uint64_t blocks = 0;
        for (Part part; ReadPart(cursor, part); part = {}) {
            blocks += CheckPart(file, part, version);
            if ((version & 0x1000) == 0) break;
        }
        return blocks > 0 && blocks * 8 <= file.size();
    } catch (const Wrong&) {
        return false;
    }
}

// Above that many bytes there may be more names than the reader allows.
constexpr size_t kMostCompared = 16 << 10;

void CheckExr(const uint8_t* data, size_t size) {
    static MemoryFile file;
    file.Set(data, size);
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    bool isAccepted = true;
    try {
        ovnxmedia::SourceFile source(file.fd());
        ovnxmedia::CheckExrHeaders(source);
    } catch (const ovnxmedia::Failure&) {
        isAccepted = false;
    }
    Demand(size > kMostCompared || isAccepted == IsFine(bytes));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 0 && data[0] == 0xFF)
        CheckJpeg(data, size);
    else
        CheckExr(data, size);
    return 0;
}
