// Bytes with bounds: the one way in which readers of media files compare, cut and load what they have read.
// Offsets and counts have 64 bits, so that sums of numbers from a file cannot wrap.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace media {

inline uint16_t _getU16BigEndianFromBytes(const unsigned char* bytes) {
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

inline uint32_t _getU32BigEndianFromBytes(const unsigned char* bytes) {
    return static_cast<uint32_t>(_getU16BigEndianFromBytes(bytes)) << 16 |
           _getU16BigEndianFromBytes(bytes + 2);
}

inline uint64_t _getU64BigEndianFromBytes(const unsigned char* bytes) {
    return static_cast<uint64_t>(_getU32BigEndianFromBytes(bytes)) << 32 |
           _getU32BigEndianFromBytes(bytes + 4);
}

// Does not own the bytes.
class ByteView {
  public:
    ByteView() = default;
    explicit ByteView(std::string_view bytes) : bytes_(bytes) {}

    size_t size() const { return bytes_.size(); }
    std::string_view text() const { return bytes_; }
    std::string str() const { return std::string(bytes_); }

    // The part from `offset` on, cut at the end of the view; empty when it begins after the end.
    ByteView Sub(uint64_t offset, uint64_t count = UINT64_MAX) const {
        if (offset >= bytes_.size()) return {};
        const uint64_t kept = std::min<uint64_t>(count, bytes_.size() - offset);
        return ByteView({bytes_.data() + offset, static_cast<size_t>(kept)});
    }

    // Also false when the text would go beyond the end.
    bool HasAt(uint64_t offset, std::string_view text) const {
        return Sub(offset, text.size()).bytes_ == text;
    }
    bool StartsWith(std::string_view text) const { return HasAt(0, text); }

    // Big-endian numbers; 0 when they would go beyond the end.
    uint16_t U16(uint64_t offset) const { return Load<uint16_t>(offset, _getU16BigEndianFromBytes); }
    uint32_t U32(uint64_t offset) const { return Load<uint32_t>(offset, _getU32BigEndianFromBytes); }
    uint64_t U64(uint64_t offset) const { return Load<uint64_t>(offset, _getU64BigEndianFromBytes); }

    // A little-endian number of up to four bytes; 0 when it would go beyond the end.
    uint32_t Little(uint64_t offset, size_t count) const {
        const ByteView part = Sub(offset, count);
        uint32_t value = 0;
        for (size_t i = part.size() < count ? 0 : count; i-- > 0;)
            value = value << 8 | static_cast<unsigned char>(part.bytes_[i]);
        return value;
    }

  private:
    template <typename Number>
    Number Load(uint64_t offset, Number (*load)(const unsigned char*)) const {
        const ByteView part = Sub(offset, sizeof(Number));
        if (part.size() < sizeof(Number)) return 0;
        return load(reinterpret_cast<const unsigned char*>(part.bytes_.data()));
    }

    std::string_view bytes_;
};

}  // namespace media
