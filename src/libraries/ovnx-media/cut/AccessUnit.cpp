#include "libraries/ovnx-media/cut/AccessUnit.h"

#include <algorithm>
#include <string>

#include "libraries/media-bytes/ByteView.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"

namespace ovnxmedia {
namespace {

// Messages that are longer are not about recovery.
constexpr size_t kMaxMessages = 4096;
constexpr size_t kMaxUnits = 1000;
constexpr uint32_t kRecoveryPoint = 6;
// Of a sample description, before the boxes in it.
constexpr size_t kVisualEntry = 78;

// Removes the bytes that keep a unit from containing the start of another.
std::string Unescaped(std::string_view bytes) {
    std::string out;
    int zeros = 0;
    for (const char byte : bytes) {
        const bool isEscape = zeros >= 2 && byte == 3;
        if (!isEscape) out += byte;
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    return out;
}

// A number as the codings write them; false beyond the end.
bool ReadExpGolomb(std::string_view bytes, uint32_t& value) {
    size_t at = 0;
    const auto bit = [&] { return at / 8 < bytes.size() && bytes[at / 8] >> (7 - at % 8) & 1; };
    while (at < 32 && at < bytes.size() * 8 && !bit())
        ++at;
    const size_t zeros = at;
    if (zeros >= 32 || zeros * 2 + 1 > bytes.size() * 8) return false;
    uint64_t code = 0;
    for (size_t i = 0; i <= zeros; ++i, ++at)
        code = code << 1 | (bit() ? 1 : 0);
    value = static_cast<uint32_t>(code - 1);
    return true;
}

// Numbers of messages are written as a row of 255 and a rest.
size_t TakeMessageNumber(std::string_view& messages) {
    size_t number = 0;
    while (!messages.empty()) {
        const auto byte = static_cast<unsigned char>(messages.front());
        messages.remove_prefix(1);
        number += byte;
        if (byte != 255) break;
    }
    return number;
}

void ReadMessages(std::string_view messages, NalCoding coding, AccessUnit& unit) {
    while (messages.size() > 2) {
        const size_t type = TakeMessageNumber(messages);
        const size_t size = TakeMessageNumber(messages);
        uint32_t count = 0;
        if (type == kRecoveryPoint && ReadExpGolomb(messages.substr(0, size), count)) {
            unit.hasRecoveryPoint = true;
            // HEVC counts from the picture both ways; what is shown earlier is whole by then.
            unit.recoveryPictures = coding == NalCoding::H264 ? count : count % 2 != 0 ? count / 2 + 1 : 0;
        }
        messages.remove_prefix(std::min(size, messages.size()));
    }
}

// A picture's first unit, or one before it. False once nothing more can follow that matters.
bool TakeUnit(std::string_view bytes, NalCoding coding, AccessUnit& unit) {
    const auto header = static_cast<unsigned char>(bytes.front());
    const bool isH264 = coding == NalCoding::H264;
    const int type = isH264 ? header & 31 : header >> 1 & 63;
    if (type == (isH264 ? 6 : 39)) {
        ReadMessages(Unescaped(bytes.substr(isH264 ? 1 : 2)), coding, unit);
        return true;
    }
    const bool isPicture = isH264 ? type >= 1 && type <= 5 : type < 32;
    if (!isPicture) return true;
    unit.isRefresh = isH264 ? type == 5 : type >= 16 && type <= 23;
    unit.isReference = !isH264 || (header & 0x60) != 0;
    return false;
}

}  // namespace

NalFormat NalFormatOf(std::string_view entryType, std::string_view entry) {
    const bool isH264 = entryType == "avc1" || entryType == "avc3";
    if (!isH264 && entryType != "hvc1" && entryType != "hev1") return {};
    const media::ByteView setup(
        ContentAt(entry.substr(std::min(entry.size(), kVisualEntry)), {isH264 ? "avcC" : "hvcC"}));
    if (setup.size() < 23 && !(isH264 && setup.size() >= 7)) return {};
    return {isH264 ? NalCoding::H264 : NalCoding::Hevc, (setup.Little(isH264 ? 4 : 21, 1) & 3) + 1};
}

AccessUnit ReadAccessUnit(SourceFile& file, const Sample& sample, const NalFormat& format) {
    AccessUnit unit;
    uint64_t at = sample.offset;
    const uint64_t end = sample.offset + sample.size;
    char buffer[kMaxMessages];
    for (size_t count = 0; count < kMaxUnits && at + format.lengthSize < end; ++count) {
        const size_t got = file.ReadAt(at, buffer, std::min<uint64_t>(sizeof(buffer), end - at));
        if (got <= format.lengthSize) break;
        uint64_t size = 0;
        for (uint32_t i = 0; i < format.lengthSize; ++i)
            size = size << 8 | static_cast<unsigned char>(buffer[i]);
        const std::string_view bytes(buffer + format.lengthSize,
                                     std::min<uint64_t>(size, got - format.lengthSize));
        if (bytes.empty() || !TakeUnit(bytes, format.coding, unit)) break;
        at += format.lengthSize + size;
    }
    return unit;
}

}  // namespace ovnxmedia
