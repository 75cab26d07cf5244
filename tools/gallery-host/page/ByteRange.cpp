#include "gallery-host/page/ByteRange.h"

#include <algorithm>
#include <optional>

#include <strings.h>

namespace host::page {
namespace {

using Kind = ByteRange::Kind;

std::string_view Trim(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// Numbers beyond 64 bits count as the largest. Nothing for a text that is not all digits.
std::optional<uint64_t> ReadNumber(std::string_view text) {
    if (text.empty()) return std::nullopt;
    uint64_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        const auto digit = static_cast<uint64_t>(c - '0');
        number = number > (UINT64_MAX - digit) / 10 ? UINT64_MAX : number * 10 + digit;
    }
    return number;
}

ByteRange LastBytes(std::string_view text, uint64_t size) {
    const std::optional<uint64_t> wanted = ReadNumber(text);
    if (!wanted) return {Kind::kWhole, 0, size};
    if (*wanted == 0) return {Kind::kUnsatisfiable, 0, 0};
    // An empty file has no part to name, and all of it is nothing.
    if (size == 0) return {Kind::kWhole, 0, 0};
    const uint64_t length = std::min(*wanted, size);
    return {Kind::kPart, size - length, length};
}

}  // namespace

ByteRange ReadRange(std::string_view field, uint64_t size) {
    constexpr std::string_view unit = "bytes=";
    const ByteRange whole{Kind::kWhole, 0, size};
    if (field.size() < unit.size() || strncasecmp(field.data(), unit.data(), unit.size()) != 0) return whole;
    const std::string_view range = Trim(field.substr(unit.size()));
    const size_t dash = range.find('-');
    if (dash == std::string_view::npos) return whole;
    if (dash == 0) return LastBytes(range.substr(1), size);
    const std::optional<uint64_t> first = ReadNumber(range.substr(0, dash));
    const std::string_view end = range.substr(dash + 1);
    const std::optional<uint64_t> last = end.empty() ? UINT64_MAX : ReadNumber(end);
    if (!first || !last || *last < *first) return whole;
    if (*first >= size) return {Kind::kUnsatisfiable, 0, 0};
    return {Kind::kPart, *first, std::min(*last, size - 1) - *first + 1};
}

}  // namespace host::page
