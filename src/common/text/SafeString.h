// Bounds-checked copies of strings under the names that other C libraries have them. They differ in how they
// fail: by std::runtime_error with "KXP::Error::InvalidPointer" or "KXP::Error::InvalidArg", after which a
// destination that can be written holds the empty text. Sizes and counts are in characters; the size has room
// for the terminator, which is always written.
#pragma once

#include <cstddef>
#include <cstdint>

// As a count: copy what fits, and return kStringTruncated if that was not all.
constexpr size_t kTruncate = SIZE_MAX;
constexpr int kStringTruncated = 80;

// The length of a text of which no more than `limit` characters are looked at.
size_t strnlen_(const char* text, size_t limit);
size_t strnlen_(const wchar_t* text, size_t limit);

// Copies `count` characters and a terminator.
void strncpy_(char* destination, const char* source, size_t count);
void strncpy_(wchar_t* destination, const wchar_t* source, size_t count);

// Copies at most `count` characters. A source that does not fit is an error when the count is 0 or no less
// than the size; a smaller count cuts it.
int strncpy_s(char* destination, size_t size, const char* source, size_t count);
int wcsncpy_s(wchar_t* destination, size_t size, const wchar_t* source, size_t count);

// Copies the whole source, which must fit.
int strcpy_s(char* destination, size_t size, const char* source);
int wcscpy_s(wchar_t* destination, size_t size, const wchar_t* source);
