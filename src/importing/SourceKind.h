// What a file is by its first bytes, whatever its name.
#pragma once

#include <cstddef>
#include <string_view>

namespace importing {

enum class SourceKind {
    kUnknown,
    kPng,
    kJpeg,
    kMp4,
    kOtherVideo,  // QuickTime, Matroska, Flash video, MPEG transport stream
};

// Enough for every kind.
inline constexpr size_t kKindBytes = 400;

SourceKind KindOf(std::string_view start);

// The ending that the product's readers expect, with its dot; empty for what cannot be a capture.
std::string_view ExtensionOf(SourceKind kind);

}  // namespace importing
