#include "common/text/Base64.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <stdexcept>

#include <b64/decode.h>
#include <b64/encode.h>

namespace KXP {
namespace {

// The library counts in ints.
int Length(std::string_view text) {
    if (text.size() > INT_MAX / 2) throw std::length_error("too long for base64");
    return static_cast<int>(text.size());
}

// A group of four characters has 24 bits. A foreign one sets the bit above them, in whichever place it
// stands.
constexpr uint32_t kAboveGroup = 1u << 24;
constexpr uint32_t kForeign = kAboveGroup | kAboveGroup >> 6 | kAboveGroup >> 12 | kAboveGroup >> 18;

constexpr std::array<uint32_t, 256> MakeValues() {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<uint32_t, 256> values{};
    for (uint32_t& value : values)
        value = kForeign;
    for (size_t i = 0; i < alphabet.size(); ++i)
        values[static_cast<unsigned char>(alphabet[i])] = static_cast<uint32_t>(i);
    return values;
}

// Decodes groups of four characters of the alphabet, up to the first group with any other, and returns how
// many bytes came of it. The library decodes one character at a time, and each capture has a block of
// hundreds.
size_t DecodeWholeGroups(std::string_view text, char* bytes) {
    static constexpr std::array<uint32_t, 256> kValues = MakeValues();
    size_t count = 0;
    for (size_t at = 0; at + 4 <= text.size(); at += 4) {
        const auto valueOf = [&](size_t index) -> uint32_t {
            return kValues[static_cast<unsigned char>(text[at + index])];
        };
        const uint32_t group = valueOf(0) << 18 | valueOf(1) << 12 | valueOf(2) << 6 | valueOf(3);
        if (group >= kAboveGroup) break;
        bytes[count] = static_cast<char>(group >> 16);
        bytes[count + 1] = static_cast<char>(group >> 8);
        bytes[count + 2] = static_cast<char>(group);
        count += 3;
    }
    return count;
}

}  // namespace

std::string EncodeBase64(std::string_view bytes) {
    std::string text(Base64Length(static_cast<size_t>(Length(bytes))), '\0');
    EncodeBase64(bytes, text.data());
    return text;
}

void EncodeBase64(std::string_view bytes, char* text) {
    // The encoder breaks lines after 72 characters and after the last.
    constexpr size_t kLines = 64;
    char lines[kLines * 73 + 8];
    const auto put = [&](int length) { text = std::remove_copy(lines, lines + length, text, '\n'); };
    base64::encoder encoder;
    for (size_t at = 0; at < bytes.size(); at += kLines * 54) {
        const std::string_view some = bytes.substr(at, kLines * 54);
        put(encoder.encode(some.data(), Length(some), lines));
    }
    put(encoder.encode_end(lines));
}

bool DecodeBase64(std::string_view text, std::string& bytes) {
    bytes = DecodeBase64Loosely(text);
    return EncodeBase64(bytes) == text;
}

std::string DecodeBase64Loosely(std::string_view text) {
    // The decoder writes and reads one byte beyond what it has decoded.
    std::string bytes(static_cast<size_t>(Length(text)) / 4 * 3 + text.size() % 4 + 1, '\0');
    const size_t plain = DecodeWholeGroups(text, bytes.data());
    const std::string_view rest = text.substr(plain / 3 * 4);
    base64::decoder decoder;
    // The constructor's own initialisation is all the state there is: one block, one call.
    const int length = decoder.decode(rest.data(), Length(rest), bytes.data() + plain);
    bytes.resize(plain + static_cast<size_t>(length));
    return bytes;
}

}  // namespace KXP
