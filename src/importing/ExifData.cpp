#include "importing/ExifData.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>

#include "importing/Splice.h"

namespace importing {
namespace {

using namespace std::string_view_literals;

constexpr auto kLittleEndian = "II*\0"sv;
constexpr auto kBigEndian = "MM\0*"sv;
constexpr size_t kHeaderSize = 8;
constexpr size_t kEntrySize = 12;
constexpr size_t kValueInEntry = 4;
// A segment's length has 16 bits, and counts itself and "Exif" with two zero bytes.
constexpr size_t kMostBytes = 0xFFFF - 8;

constexpr uint16_t kPhotoLink = 0x8769;
constexpr uint16_t kPlaceLink = 0x8825;
constexpr uint16_t kInteroperabilityLink = 0xA005;

// Bytes of one value by its type, and of the numbers in it; texts and opaque bytes have no numbers.
struct Type {
    size_t size;
    size_t number;
};
constexpr Type kTypes[] = {{0, 0}, {1, 1}, {1, 1}, {2, 2}, {4, 4}, {8, 4}, {1, 1},
                           {1, 1}, {2, 2}, {4, 4}, {8, 4}, {4, 4}, {8, 8}};

Type TypeOf(uint16_t type) {
    return type < std::size(kTypes) ? kTypes[type] : Type{0, 0};
}

bool IsLink(uint16_t tag) {
    return tag == kPhotoLink || tag == kPlaceLink || tag == kInteroperabilityLink;
}

// What the product's readers look for in the first bytes of a file.
bool IsEarly(uint16_t tag) {
    return tag == exif::kDrsName || tag == exif::kSoftware;
}

bool IsDate(uint16_t tag) {
    constexpr uint16_t kDates[] = {exif::kDateTime, 0x9003, 0x9004, 0x9010, 0x9011,
                                   0x9012,          0x9290, 0x9291, 0x9292};
    return std::find(std::begin(kDates), std::end(kDates), tag) != std::end(kDates);
}

class Reader {
  public:
    explicit Reader(media::ByteView tiff) : tiff_(tiff), isLittle_(tiff.StartsWith(kLittleEndian)) {}

    bool IsTiff() const { return isLittle_ || tiff_.StartsWith(kBigEndian); }
    uint32_t Short(uint64_t at) const { return isLittle_ ? tiff_.Little(at, 2) : tiff_.U16(at); }
    uint32_t Long(uint64_t at) const { return isLittle_ ? tiff_.Little(at, 4) : tiff_.U32(at); }

    // False when the directory, or an entry of it that must not be lost, is damaged.
    bool Read(uint64_t at, bool isPlace, ExifDirectory& directory) {
        const uint64_t count = Short(at);
        if (count == 0 || at + 2 + count * kEntrySize > tiff_.size()) return false;
        for (uint64_t i = 0; i < count; ++i) {
            const uint64_t entry = at + 2 + i * kEntrySize;
            const auto tag = static_cast<uint16_t>(Short(entry));
            if (IsLink(tag)) continue;
            const bool isNeeded = isPlace || tag == exif::kOrientation || IsDate(tag);
            if (!ReadEntry(entry, tag, directory) && isNeeded) return false;
        }
        return true;
    }

    // Where the entry of a directory leads; 0 when there is none.
    uint64_t LinkIn(uint64_t directory, uint16_t tag) const {
        const uint64_t count = Short(directory);
        for (uint64_t i = 0; i < count; ++i) {
            const uint64_t entry = directory + 2 + i * kEntrySize;
            if (entry + kEntrySize > tiff_.size()) break;
            if (Short(entry) == tag) return Long(entry + 8);
        }
        return 0;
    }

  private:
    bool ReadEntry(uint64_t at, uint16_t tag, ExifDirectory& directory) {
        const auto type = static_cast<uint16_t>(Short(at + 2));
        const uint32_t count = static_cast<uint32_t>(Long(at + 4));
        const Type of = TypeOf(type);
        const uint64_t size = uint64_t{count} * of.size;
        if (size == 0 || size > kMostBytes - taken_) return false;
        const uint64_t from = size <= kValueInEntry ? at + 8 : Long(at + 8);
        std::string value = tiff_.Sub(from, size).str();
        if (value.size() < size) return false;
        if (isLittle_ && of.number > 1)
            for (size_t number = 0; number < value.size(); number += of.number)
                std::reverse(value.begin() + static_cast<long>(number),
                             value.begin() + static_cast<long>(number + of.number));
        // Entries may share bytes, so that few could stand for many.
        taken_ += value.size();
        directory.Put({tag, type, count, std::move(value)});
        return true;
    }

    const media::ByteView tiff_;
    const bool isLittle_;
    size_t taken_ = 0;
};

class Writer {
  public:
    Writer() : bytes_(kBigEndian) { PutLong(kHeaderSize); }

    // Returns where the directory lies. The links, from tag to position, are settled by SetLink.
    size_t Add(const ExifDirectory& directory, const std::vector<uint16_t>& links) {
        std::vector<ExifEntry> entries = directory.entries();
        for (const uint16_t tag : links)
            entries.push_back({tag, exif::kLong, 1, std::string(kValueInEntry, '\0')});
        std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.tag < b.tag; });
        const size_t start = bytes_.size();
        const size_t values = start + 2 + entries.size() * kEntrySize + kValueInEntry;
        std::map<uint16_t, size_t> places;
        std::string rest;
        const auto place = [&](bool early) {
            for (const ExifEntry& entry : entries) {
                if (IsEarly(entry.tag) != early || entry.value.size() <= kValueInEntry) continue;
                places[entry.tag] = values + rest.size();
                rest += entry.value;
                if (rest.size() % 2 != 0) rest += '\0';
            }
        };
        place(true);
        place(false);
        PutShort(static_cast<uint16_t>(entries.size()));
        for (const ExifEntry& entry : entries) {
            PutShort(entry.tag);
            PutShort(entry.type);
            PutLong(entry.count);
            if (places.count(entry.tag) > 0)
                PutLong(places[entry.tag]);
            else
                bytes_.append(entry.value).append(kValueInEntry - entry.value.size(), '\0');
        }
        PutLong(0);  // no further directory
        bytes_ += rest;
        return start;
    }

    void SetLink(size_t directory, uint16_t tag, size_t position) {
        for (size_t entry = directory + 2;; entry += kEntrySize) {
            if (media::ByteView(bytes_).U16(entry) != tag) continue;
            std::string number;
            Append(number, static_cast<uint32_t>(position), kValueInEntry);
            bytes_.replace(entry + 8, kValueInEntry, number);
            return;
        }
    }

    const std::string& bytes() const { return bytes_; }

  private:
    static void Append(std::string& bytes, uint32_t value, size_t size) {
        for (size_t i = size; i-- > 0;)
            bytes += static_cast<char>(value >> 8 * i & 0xFF);
    }
    void PutShort(uint16_t value) { Append(bytes_, value, 2); }
    void PutLong(size_t value) { Append(bytes_, static_cast<uint32_t>(value), 4); }

    std::string bytes_;
};

}  // namespace

void ExifDirectory::Put(ExifEntry entry) {
    Remove(entry.tag);
    const auto after = [](const ExifEntry& a, const ExifEntry& b) { return a.tag < b.tag; };
    entries_.insert(std::upper_bound(entries_.begin(), entries_.end(), entry, after), std::move(entry));
}

void ExifDirectory::Remove(uint16_t tag) {
    const auto hasTag = [&](const ExifEntry& entry) { return entry.tag == tag; };
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(), hasTag), entries_.end());
}

std::optional<ExifData> ReadExif(media::ByteView tiff) {
    Reader reader(tiff);
    if (!reader.IsTiff()) return {};
    ExifData data;
    const uint64_t image = reader.Long(4);
    if (!reader.Read(image, false, data.image)) return {};
    const uint64_t photo = reader.LinkIn(image, kPhotoLink);
    const uint64_t place = reader.LinkIn(image, kPlaceLink);
    if (photo != 0 && !reader.Read(photo, false, data.photo)) return {};
    if (place != 0 && !reader.Read(place, true, data.place)) return {};
    const uint64_t more = photo != 0 ? reader.LinkIn(photo, kInteroperabilityLink) : 0;
    if (more != 0) (void)reader.Read(more, false, data.interoperability);
    return data;
}

std::string WriteExif(const ExifData& data) {
    const auto isThere = [](const ExifDirectory& directory) { return !directory.entries().empty(); };
    const bool hasMore = isThere(data.interoperability);
    const bool hasPhoto = isThere(data.photo) || hasMore;
    std::vector<uint16_t> links;
    if (hasPhoto) links.push_back(kPhotoLink);
    if (isThere(data.place)) links.push_back(kPlaceLink);
    Writer writer;
    const size_t image = writer.Add(data.image, links);
    if (hasPhoto) {
        const size_t photo =
            writer.Add(data.photo, hasMore ? std::vector{kInteroperabilityLink} : std::vector<uint16_t>{});
        writer.SetLink(image, kPhotoLink, photo);
        if (hasMore) writer.SetLink(photo, kInteroperabilityLink, writer.Add(data.interoperability, {}));
    }
    if (isThere(data.place)) writer.SetLink(image, kPlaceLink, writer.Add(data.place, {}));
    if (writer.bytes().size() > kMostBytes) throw ImportError("has too much Exif data to add to");
    return writer.bytes();
}

}  // namespace importing
