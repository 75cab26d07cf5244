#include "common/text/SafeString.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

constexpr const char* kInvalidPointer = "KXP::Error::InvalidPointer";
constexpr const char* kInvalidArg = "KXP::Error::InvalidArg";

template <typename Char>
size_t BoundedLength(const Char* text, size_t limit) {
    const Char* end = std::char_traits<Char>::find(text, limit, Char{});
    return end ? static_cast<size_t>(end - text) : limit;
}

template <typename Char>
void CopyAndTerminate(Char* destination, const Char* source, size_t count) {
    std::char_traits<Char>::copy(destination, source, count);
    destination[count] = 0;
}

template <typename Char>
[[noreturn]] void Refuse(Char* destination, const char* text) {
    destination[0] = 0;
    throw std::runtime_error(text);
}

template <typename Char>
bool Overlap(const Char* destination, const Char* source, size_t count) {
    const std::less<const Char*> before;
    return before(source, destination + count + 1) && before(destination, source + count);
}

// No count means the whole source.
template <typename Char>
int CopyChecked(Char* destination, size_t size, const Char* source, std::optional<size_t> count) {
    if (!destination) throw std::runtime_error(kInvalidPointer);
    if (size < 1) throw std::runtime_error(kInvalidArg);
    if (!source) Refuse(destination, kInvalidPointer);
    const bool cuts = count && *count > 0 && *count < size;
    // No further than the copy may reach: a source that is cut need not be terminated.
    const size_t length = BoundedLength(source, cuts ? *count : size);
    size_t copied = count ? std::min(length, *count) : length;
    int result = 0;
    if (length + 1 > size) {
        if (count != kTruncate) Refuse(destination, kInvalidArg);
        copied = size - 1;
        result = kStringTruncated;
    }
    if (Overlap(destination, source, copied)) Refuse(destination, kInvalidArg);
    CopyAndTerminate(destination, source, copied);
    return result;
}

}  // namespace

size_t strnlen_(const char* text, size_t limit) {
    return BoundedLength(text, limit);
}

size_t strnlen_(const wchar_t* text, size_t limit) {
    return BoundedLength(text, limit);
}

void strncpy_(char* destination, const char* source, size_t count) {
    CopyAndTerminate(destination, source, count);
}

void strncpy_(wchar_t* destination, const wchar_t* source, size_t count) {
    CopyAndTerminate(destination, source, count);
}

int strncpy_s(char* destination, size_t size, const char* source, size_t count) {
    return CopyChecked(destination, size, source, count);
}

int wcsncpy_s(wchar_t* destination, size_t size, const wchar_t* source, size_t count) {
    return CopyChecked(destination, size, source, count);
}

int strcpy_s(char* destination, size_t size, const char* source) {
    return CopyChecked(destination, size, source, std::nullopt);
}

int wcscpy_s(wchar_t* destination, size_t size, const wchar_t* source) {
    return CopyChecked(destination, size, source, std::nullopt);
}
