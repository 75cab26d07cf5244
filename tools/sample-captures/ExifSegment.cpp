#include "sample-captures/ExifSegment.h"

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "sample-captures/MediaBytes.h"

namespace samples {
namespace {

using namespace std::string_literals;

struct Entry {
    uint16_t tag;
    uint16_t type;
    std::string value;
};

constexpr uint16_t kAscii = 2;
constexpr uint16_t kUndefined = 7;

// The product scans byte by byte. It looks for every value after the directory, but one of up to four bytes
// lies in its entry; and it takes 00 0B for the tag of the DRS name, though a count of 11 reads the same.
void CheckReadable(const Entry& entry, bool hasDrsName) {
    const size_t size = entry.value.size();
    if (size <= 4 || (size == 11 && !hasDrsName))
        throw std::invalid_argument("An Exif value of " + std::to_string(size) + " bytes would be misread");
}

std::vector<Entry> Entries(const ExifTexts& texts) {
    std::vector<Entry> entries;
    const auto add = [&](uint16_t tag, uint16_t type, const std::string& text) {
        if (text.empty()) return;
        entries.push_back({tag, type, type == kAscii ? text + '\0' : text});
        CheckReadable(entries.back(), !texts.drsName.empty());
    };
    // TIFF wants its entries in ascending order of their tags.
    add(0x000B, kUndefined, texts.drsName);
    add(0x010E, kAscii, texts.description);
    add(0x010F, kAscii, texts.make);
    add(0x0110, kAscii, texts.model);
    add(0x0131, kAscii, texts.software);
    add(0xC6F6, kUndefined, texts.drsProfileName);
    return entries;
}

// A TIFF header, one directory and its values. TIFF 6.0, section 2.
std::string Tiff(const std::vector<Entry>& entries) {
    std::string directory = U16(static_cast<uint16_t>(entries.size()));
    std::string values;
    const size_t valuesStart = 8 + 2 + entries.size() * 12 + 4;
    for (const Entry& entry : entries) {
        directory += U16(entry.tag) + U16(entry.type) + U32(static_cast<uint32_t>(entry.value.size())) +
                     U32(static_cast<uint32_t>(valuesStart + values.size()));
        values += entry.value;
        // The values start two bytes past a multiple of four and keep to that. So no offset equals the
        // number of a tag, for which a reader that scans byte by byte would take it.
        values.resize((values.size() + 3) / 4 * 4);
    }
    return "MM\0\x2A"s + U32(8) + directory + U32(0) + values;
}

}  // namespace

std::string ExifSegment(const ExifTexts& texts) {
    const std::vector<Entry> entries = Entries(texts);
    if (entries.empty()) return "";
    const std::string data = "Exif\0\0"s + Tiff(entries);
    if (data.size() + 2 > UINT16_MAX) throw std::invalid_argument("The Exif texts are too long");
    return "\xFF\xE1" + U16(static_cast<uint16_t>(data.size() + 2)) + data;
}

}  // namespace samples
