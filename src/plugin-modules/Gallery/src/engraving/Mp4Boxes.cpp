#include "plugin-modules/Gallery/src/engraving/Mp4Boxes.h"

#include <algorithm>

#include "plugin-modules/Gallery/src/media/ByteCursor.h"

namespace engraving {
namespace {

using media::ByteCursor;
using media::ByteView;

// More than any recording has; a file of nothing but headers must not fill the memory.
constexpr size_t kMaxBoxes = 200000;

// Nothing for a box that runs past `to`, or whose header does.
std::optional<Box> ReadBox(ByteCursor& cursor, uint64_t at, uint64_t to) {
    cursor.MoveTo(at);
    const ByteView header = cursor.Take(16);
    Box box;
    box.type = header.Sub(4, 4).str();
    box.offset = at;
    box.size = header.U32(0);
    if (header.size() < 8) return {};
    if (box.size == 0) throw EngravingError("a box runs to the end of the file");
    if (box.size == 1) {
        box.headerSize = 16;
        box.size = header.U64(8);
    }
    if (box.size < box.headerSize && header.size() >= box.headerSize)
        throw EngravingError("a box is smaller than its header");
    if (box.size > to - at) return {};
    return box;
}

bool IsZero(ByteCursor& cursor, uint64_t at) {
    cursor.MoveTo(at);
    return cursor.Take(4).text() == std::string_view("\0\0\0\0", 4);
}

// What an engraving that was cut off while it appended has left: the beginning of a movie.
bool IsRemnant(ByteCursor& cursor, uint64_t at) {
    cursor.MoveTo(at);
    const ByteView header = cursor.Take(8);
    return header.size() < 8 || header.HasAt(4, "moov") || header.HasAt(4, "udta");
}

bool Has(const std::vector<Box>& boxes, const char* type) {
    return std::any_of(boxes.begin(), boxes.end(), [&](const Box& box) { return box.type == type; });
}

void CheckMovie(media::ByteSource& source, const Mp4Layout& layout) {
    if (!Has(layout.parts, "mvhd") || !Has(layout.parts, "trak"))
        throw EngravingError("the movie has no header or no track");
    for (const Box& part : layout.parts)
        if (part.type == "trak") ReadBoxes(source, part.content(), part.end());
}

void Take(const Box& box, Mp4Layout& layout) {
    if (box.type == "moov") {
        if (layout.movie.size == 0)
            layout.movie = box;
        else
            layout.deadMovies.push_back(box);
    } else if (box.IsFree()) {
        layout.free.push_back(box);
    } else if (box.type == "moof" && !layout.firstFragment) {
        layout.firstFragment = box.offset;
    }
}

}  // namespace

std::string BoxHeader(uint64_t size, const std::string& type) {
    std::string header;
    for (int shift = 24; shift >= 0; shift -= 8)
        header += static_cast<char>(size >> shift & 0xff);
    return header + type;
}

std::vector<Box> ReadBoxes(media::ByteSource& source, uint64_t from, uint64_t to, ListEnd end) {
    ByteCursor cursor(source);
    std::vector<Box> boxes;
    for (uint64_t at = from; at < to; at = boxes.back().end()) {
        if (end == ListEnd::MayBeZero && to - at == 4 && IsZero(cursor, at)) break;
        const std::optional<Box> box = ReadBox(cursor, at, to);
        if (!box) throw EngravingError("a box runs past the end of the one around it");
        if (boxes.size() == kMaxBoxes) throw EngravingError("too many boxes");
        boxes.push_back(*box);
    }
    return boxes;
}

Mp4Layout ReadLayout(media::ByteSource& source, uint64_t size) {
    ByteCursor cursor(source);
    Mp4Layout layout;
    size_t count = 0;
    while (layout.end < size) {
        const std::optional<Box> box = ReadBox(cursor, layout.end, size);
        if (!box) {
            if (layout.movie.size > 0 && IsRemnant(cursor, layout.end)) break;
            throw EngravingError("a box runs past the end of the file");
        }
        if (++count > kMaxBoxes) throw EngravingError("too many boxes");
        Take(*box, layout);
        layout.end = box->end();
    }
    if (layout.movie.size == 0) throw EngravingError("there is no movie in it");
    layout.parts = ReadBoxes(source, layout.movie.content(), layout.movie.end());
    CheckMovie(source, layout);
    return layout;
}

}  // namespace engraving
