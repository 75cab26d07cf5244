#include "libraries/share-common/Base64.h"

#include <algorithm>
#include <climits>
#include <stdexcept>

#include <b64/decode.h>
#include <b64/encode.h>

std::string EncodeBase64(std::string_view plain) {
    // Beyond this the encoder's ints overflow.
    if (plain.size() > INT_MAX / 2) throw std::length_error("too long for base64");
    // The encoder breaks lines after 72 characters, and behind the last.
    std::string code((plain.size() + 2) / 3 * 4 + plain.size() / 54 + 2, '\0');
    base64::encoder encoder;
    int length = encoder.encode(plain.data(), static_cast<int>(plain.size()), code.data());
    length += encoder.encode_end(code.data() + length);
    code.resize(static_cast<size_t>(length));
    code.erase(std::remove(code.begin(), code.end(), '\n'), code.end());
    return code;
}

std::string DecodeBase64(std::string_view code) {
    if (code.size() > INT_MAX) return {};
    // The decoder writes and reads one byte behind what it has decoded.
    std::string plain(code.size() / 4 * 3 + code.size() % 4 + 1, '\0');
    base64::decoder decoder;
    // The constructor's own initialisation is all the state there is: one block, one call.
    const int length = decoder.decode(code.data(), static_cast<int>(code.size()), plain.data());
    plain.resize(static_cast<size_t>(length));
    return plain;
}
