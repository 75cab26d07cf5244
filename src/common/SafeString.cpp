#include "common/SafeString.h"

#include <algorithm>
#include <cwchar>
#include <functional>
#include <optional>
#include <stdexcept>

namespace {

constexpr const char* kInvalidPointer = "KXP::Error::InvalidPointer";
constexpr const char* kInvalidArg = "KXP::Error::InvalidArg";

[[noreturn]] void Refuse(wchar_t* destination, const char* text) {
    destination[0] = 0;
    throw std::runtime_error(text);
}

bool Overlap(const wchar_t* destination, const wchar_t* source, size_t count) {
    const std::less<const wchar_t*> before;
    return before(source, destination + count + 1) && before(destination, source + count);
}

// No count means the whole source.
int CopyChecked(wchar_t* destination, size_t size, const wchar_t* source, std::optional<size_t> count) {
    if (!destination) throw std::runtime_error(kInvalidPointer);
    if (size < 1) throw std::runtime_error(kInvalidArg);
    if (!source) Refuse(destination, kInvalidPointer);
    const bool cuts = count && *count > 0 && *count < size;
    // No further than the copy may reach: a source that is cut need not be terminated.
    const size_t length = strnlen_(source, cuts ? *count : size);
    size_t copied = count ? std::min(length, *count) : length;
    int result = 0;
    if (length + 1 > size) {
        if (count != kTruncate) Refuse(destination, kInvalidArg);
        copied = size - 1;
        result = kStringTruncated;
    }
    if (Overlap(destination, source, copied)) Refuse(destination, kInvalidArg);
    std::wmemcpy(destination, source, copied);
    destination[copied] = 0;
    return result;
}

}  // namespace

size_t strnlen_(const wchar_t* text, size_t limit) {
    const wchar_t* end = std::wmemchr(text, 0, limit);
    return end ? static_cast<size_t>(end - text) : limit;
}

int wcsncpy_s(wchar_t* destination, size_t size, const wchar_t* source, size_t count) {
    return CopyChecked(destination, size, source, count);
}

int wcscpy_s(wchar_t* destination, size_t size, const wchar_t* source) {
    return CopyChecked(destination, size, source, std::nullopt);
}
