// The directories of Exif data, out of either byte order, and written big-endian as the product's readers
// need them. TIFF 6.0, section 2, and Exif 2.32, 4.6.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "libraries/media-bytes/ByteView.h"

namespace importing {

namespace exif {

inline constexpr uint16_t kDrsName = 0x000B;
inline constexpr uint16_t kSubfile = 0x00FE;
inline constexpr uint16_t kOrientation = 0x0112;
inline constexpr uint16_t kSoftware = 0x0131;
inline constexpr uint16_t kDateTime = 0x0132;

inline constexpr uint16_t kText = 2;
inline constexpr uint16_t kLong = 4;

}  // namespace exif

struct ExifEntry {
    uint16_t tag = 0;
    uint16_t type = 0;
    uint32_t count = 0;
    std::string value;  // big-endian
};

// Sorted by tag, as they must be in a file.
class ExifDirectory {
  public:
    // In place of one with this tag.
    void Put(ExifEntry entry);
    void Remove(uint16_t tag);
    const std::vector<ExifEntry>& entries() const { return entries_; }

  private:
    std::vector<ExifEntry> entries_;
};

// Without the links between the directories, and without the small picture and its directory.
struct ExifData {
    ExifDirectory image;
    ExifDirectory photo;
    ExifDirectory interoperability;
    ExifDirectory place;
};

// Of TIFF data, which begin with their byte order. An entry that is damaged or of an unknown type is left
// out, unless it is the orientation, a date or part of the place: then, and when a directory is damaged,
// there is no result.
std::optional<ExifData> ReadExif(media::ByteView tiff);

// The same as TIFF data. The values of the image directory follow it directly, those that the product's
// readers look for first. Throws ImportError when they are too long for a segment.
std::string WriteExif(const ExifData& data);

}  // namespace importing
