#include "common/text/Base64.h"

#include <algorithm>
#include <climits>
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
    std::string bytes(text.size() / 4 * 3 + text.size() % 4 + 1, '\0');
    base64::decoder decoder;
    // The constructor's own initialisation is all the state there is: one block, one call.
    const int length = decoder.decode(text.data(), Length(text), bytes.data());
    bytes.resize(static_cast<size_t>(length));
    return bytes;
}

}  // namespace KXP
