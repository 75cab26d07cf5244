// Base64, against a form that collects bits one by one.
#include <string>

#include "common/text/Base64.h"
#include "fuzz/Plain.h"

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The whole bytes in the digits of a text.
std::string Bytes(std::string_view text) {
    std::string bits;
    for (const char c : text)
        if (const size_t digit = kAlphabet.find(c); digit != std::string_view::npos)
            for (int bit = 5; bit >= 0; --bit)
                bits += digit >> bit & 1 ? '1' : '0';
    std::string bytes;
    for (size_t at = 0; at + 8 <= bits.size(); at += 8)
        bytes += static_cast<char>(std::stoi(bits.substr(at, 8), nullptr, 2));
    return bytes;
}

// Digits up to the "=" that fill the last four characters; the bits that they leave over are zero.
bool IsStrict(std::string_view text) {
    const size_t digits = text.find('=') == std::string_view::npos ? text.size() : text.find('=');
    const std::string_view end = text.substr(digits);
    if (text.size() % 4 != 0 || (!end.empty() && end != "=" && end != "==")) return false;
    for (const char c : text.substr(0, digits))
        if (kAlphabet.find(c) == std::string_view::npos) return false;
    const size_t last = digits == 0 ? 0 : kAlphabet.find(text[digits - 1]);
    return end.empty() || last % (end.size() == 1 ? 4 : 16) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    plain::Demand(KXP::DecodeBase64Loosely(text) == Bytes(text));
    std::string bytes;
    plain::Demand(KXP::DecodeBase64(text, bytes) == IsStrict(text));
    plain::Demand(KXP::DecodeBase64(KXP::EncodeBase64(text), bytes) && bytes == text);
    return 0;
}
