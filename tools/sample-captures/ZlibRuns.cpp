#include "sample-captures/ZlibRuns.h"

#include <algorithm>
#include <cstdint>

#include "sample-captures/MediaBytes.h"

namespace samples {
namespace {

// The two lengths of a repeat in use: both have a code of their own, without extra bits.
constexpr size_t kLongRepeat = 258;
constexpr size_t kShortRepeat = 10;

// Fills bytes from their lowest bit up.
class BitWriter {
  public:
    explicit BitWriter(std::string start) : bytes_(std::move(start)) {}

    void Number(uint32_t value, int bits) {
        for (int bit = 0; bit < bits; ++bit)
            Bit((value >> bit) & 1);
    }

    // Huffman codes, unlike numbers, go in from their highest bit.
    void Code(uint32_t code, int bits) {
        for (int bit = bits - 1; bit >= 0; --bit)
            Bit((code >> bit) & 1);
    }

    std::string Finish() {
        if (used_ > 0) bytes_ += static_cast<char>(current_);
        return std::move(bytes_);
    }

  private:
    void Bit(uint32_t bit) {
        current_ |= bit << used_;
        if (++used_ < 8) return;
        bytes_ += static_cast<char>(current_);
        current_ = 0;
        used_ = 0;
    }

    std::string bytes_;
    uint32_t current_ = 0;
    int used_ = 0;
};

// The fixed codes of RFC 1951, 3.2.6.
void PutLiteral(BitWriter& bits, uint8_t value) {
    if (value < 144)
        bits.Code(0x30u + value, 8);
    else
        bits.Code(0x190u + value - 144u, 9);
}

void PutRepeat(BitWriter& bits, size_t length) {
    if (length == kLongRepeat)
        bits.Code(0xC5, 8);  // symbol 285
    else
        bits.Code(0x08, 7);  // symbol 264
    bits.Code(0, 5);         // distance 1: the byte before
}

// How many bytes from `at` on equal the one before it, counted no further than one repeat reaches.
size_t RunLength(std::string_view bytes, size_t at) {
    if (at == 0) return 0;
    const size_t end = std::min(bytes.size(), at + kLongRepeat);
    size_t stop = at;
    while (stop < end && bytes[stop] == bytes[at - 1])
        ++stop;
    return stop - at;
}

uint32_t Adler32(std::string_view bytes) {
    constexpr uint32_t kModulus = 65521;
    uint32_t sum = 1;
    uint32_t sumOfSums = 0;
    for (const char c : bytes) {
        sum = (sum + static_cast<unsigned char>(c)) % kModulus;
        sumOfSums = (sumOfSums + sum) % kModulus;
    }
    return sumOfSums << 16 | sum;
}

}  // namespace

std::string ZlibCompressRuns(std::string_view bytes) {
    BitWriter bits("\x78\x01");
    bits.Number(1, 1);  // the last block
    bits.Number(1, 2);  // fixed codes
    for (size_t at = 0; at < bytes.size();) {
        const size_t run = RunLength(bytes, at);
        if (run < kShortRepeat) {
            PutLiteral(bits, static_cast<uint8_t>(bytes[at++]));
            continue;
        }
        const size_t length = run == kLongRepeat ? kLongRepeat : kShortRepeat;
        PutRepeat(bits, length);
        at += length;
    }
    bits.Code(0, 7);  // the end of the block
    return bits.Finish() + U32(Adler32(bytes));
}

}  // namespace samples
