#include "common/Base64.h"

#include <array>
#include <cstdint>

namespace KXP {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t kNoDigit = 0xFF;

constexpr std::array<uint8_t, 256> MakeDigits() {
    std::array<uint8_t, 256> digits{};
    for (uint8_t& digit : digits)
        digit = kNoDigit;
    for (size_t i = 0; i < kAlphabet.size(); ++i)
        digits[static_cast<unsigned char>(kAlphabet[i])] = static_cast<uint8_t>(i);
    return digits;
}

constexpr std::array<uint8_t, 256> kDigits = MakeDigits();

size_t PaddingOf(std::string_view text) {
    if (text.empty() || text.back() != '=') return 0;
    return text[text.size() - 2] == '=' ? 2 : 1;
}

}  // namespace

bool DecodeBase64(std::string_view text, std::string& bytes) {
    bytes.clear();
    if (text.size() % 4 != 0) return false;
    const size_t padding = PaddingOf(text);
    text.remove_suffix(padding);
    bytes.reserve(text.size() / 4 * 3 + 2);
    uint32_t bits = 0;
    unsigned count = 0;
    for (const char c : text) {
        const uint8_t digit = kDigits[static_cast<unsigned char>(c)];
        if (digit == kNoDigit) return false;
        bits = (bits << 6 | digit) & 0xFFFF;
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>(bits >> count & 0xFF);
    }
    return (bits & ((1U << count) - 1)) == 0;
}

}  // namespace KXP
