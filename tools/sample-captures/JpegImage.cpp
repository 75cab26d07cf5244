#include "sample-captures/JpegImage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "sample-captures/MediaBytes.h"

namespace samples {
namespace {

using namespace std::string_literals;

// Readers of the first 512 bytes take a shorter file for a broken one.
constexpr size_t kSmallestFile = 512;
// One unit of the scan: 16 by 16 pixels as four blocks of luma and one of each chroma (4:2:0), each block two
// bits when it is as the block before: no difference of the mean, end of block.
constexpr int kUnitPixels = 16;
constexpr uint64_t kSameUnitBits = 12;
constexpr uint64_t kSameBlockBits = 2;

using YCbCr = std::array<int, 3>;

// The conversion of JFIF 1.02, with luma centred on zero like chroma, as the coding wants it. Chroma stops at
// 127, so that no difference needs more than eight bits.
YCbCr FromRgb(const Rgb& colour) {
    const double r = colour.red;
    const double g = colour.green;
    const double b = colour.blue;
    const int cb = static_cast<int>(std::lround(-0.1687 * r - 0.3313 * g + 0.5 * b));
    const int cr = static_cast<int>(std::lround(0.5 * r - 0.4187 * g - 0.0813 * b));
    return {static_cast<int>(std::lround(0.299 * r + 0.587 * g + 0.114 * b)) - 128, std::min(cb, 127),
            std::min(cr, 127)};
}

// Fills bytes from their highest bit down, and a byte FF is followed by 00. ITU-T T.81, F.1.2.3.
class ScanWriter {
  public:
    void Put(uint32_t value, int bits) {
        for (int bit = bits - 1; bit >= 0; --bit) {
            current_ = current_ << 1 | ((value >> bit) & 1);
            if (++used_ == 8) Flush();
        }
    }

    void Zeros(uint64_t bits) {
        for (; bits > 0 && used_ > 0; --bits)
            Put(0, 1);
        bytes_.append(bits / 8, '\0');
        Put(0, static_cast<int>(bits % 8));
    }

    // A block of one value, as its difference from the block before it. ITU-T T.81, F.1.2.1.
    void FlatBlock(int difference) {
        if (difference == 0) return Zeros(kSameBlockBits);
        int category = 0;
        while (std::abs(difference) >> category)
            ++category;
        Put(0x0Fu + static_cast<uint32_t>(category), 5);
        Put(static_cast<uint32_t>(difference > 0 ? difference : difference + (1 << category) - 1), category);
        Put(0, 1);  // end of block
    }

    std::string Finish() {
        while (used_ > 0)
            Put(1, 1);
        return std::move(bytes_);
    }

  private:
    void Flush() {
        bytes_ += static_cast<char>(current_);
        if (current_ == 0xFF) bytes_ += '\0';
        current_ = 0;
        used_ = 0;
    }

    std::string bytes_;
    uint32_t current_ = 0;
    int used_ = 0;
};

std::string ScanData(uint16_t width, uint16_t height, const Gradient& colours) {
    const uint32_t columns = (width + kUnitPixels - 1u) / kUnitPixels;
    const uint32_t rows = (height + kUnitPixels - 1u) / kUnitPixels;
    ScanWriter scan;
    YCbCr before = {0, 0, 0};
    for (uint32_t row = 0; row < rows; ++row) {
        const YCbCr now = FromRgb(ColourAt(colours, row, rows));
        scan.FlatBlock(now[0] - before[0]);
        scan.Zeros(3 * kSameBlockBits);
        scan.FlatBlock(now[1] - before[1]);
        scan.FlatBlock(now[2] - before[2]);
        scan.Zeros((columns - 1) * kSameUnitBits);
        before = now;
    }
    return scan.Finish();
}

std::string Segment(char marker, const std::string& data) {
    return "\xFF"s + marker + U16(static_cast<uint16_t>(data.size() + 2)) + data;
}

// Tables, frame header and scan header: what a decoder needs ahead of the scan.
std::string Headers(uint16_t width, uint16_t height) {
    // The mean of a block counts eight of its samples' steps, so dividing by 8 leaves the sample itself.
    const std::string divisors = "\0"s + std::string(64, '\x08');
    const std::string components = "\x03\x01\x22\0\x02\x11\0\x03\x11\0"s;
    // Code lengths by number, then the symbols. Differences: 0 for "none", 1bbbb for the eight categories.
    const std::string differences = "\0\x01\0\0\0\x08\0\0\0\0\0\0\0\0\0\0\0"s + "\0\1\2\3\4\5\6\7\x08"s;
    // The only symbol of the details is the end of block.
    const std::string details = "\x10\x01\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"s + "\0"s;
    return Segment('\xDB', divisors) +
           Segment('\xC0', "\x08"s + U16(height) + U16(width) + components) +  // 8 bits, baseline
           Segment('\xC4', differences + details) + Segment('\xDA', "\x03\x01\0\x02\0\x03\0\0\x3F\0"s);
}

}  // namespace

std::string JpegImage(uint16_t width, uint16_t height, const Gradient& colours, const ExifTexts& texts) {
    if (width == 0 || height == 0) throw std::invalid_argument("A JPEG picture needs a width and a height");
    // JFIF 1.01, pixels 1 by 1, no thumbnail.
    std::string start = "\xFF\xD8" + Segment('\xE0', "JFIF\0\1\1\0\0\1\0\1\0\0"s) + ExifSegment(texts);
    const std::string picture = Headers(width, height) + ScanData(width, height, colours) + "\xFF\xD9";
    const size_t size = start.size() + picture.size();
    if (size < kSmallestFile) start += Segment('\xFE', std::string(kSmallestFile - size, ' '));
    return start + picture;
}

}  // namespace samples
