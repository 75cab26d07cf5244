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
    // The encoder breaks lines after 72 characters and after the last.
    std::string text((bytes.size() + 2) / 3 * 4 + bytes.size() / 54 + 2, '\0');
    base64::encoder encoder;
    int length = encoder.encode(bytes.data(), Length(bytes), text.data());
    length += encoder.encode_end(text.data() + length);
    text.resize(static_cast<size_t>(length));
    text.erase(std::remove(text.begin(), text.end(), '\n'), text.end());
    return text;
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
