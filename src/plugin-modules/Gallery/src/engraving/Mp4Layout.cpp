#include "plugin-modules/Gallery/src/engraving/Mp4Layout.h"

#include <algorithm>
#include <string_view>

namespace engraving {
namespace {

using media::BoxWalk;
using media::ByteSource;
using media::WalkEnd;

bool IsZero(ByteSource& source, uint64_t at) {
    char bytes[4];
    const size_t size = source.ReadAt(at, bytes, sizeof(bytes));
    return std::string_view(bytes, size) == std::string_view("\0\0\0\0", 4);
}

// The beginning of a movie, left by an engraving that was interrupted while it appended.
bool IsRemnant(ByteSource& source, uint64_t at) {
    char bytes[8];
    const std::string_view header(bytes, source.ReadAt(at, bytes, sizeof(bytes)));
    return header.size() < sizeof(bytes) || header.substr(4) == "moov" || header.substr(4) == "udta";
}

// The next box; false where the walk is complete or cut off.
bool Next(BoxWalk& walk) {
    if (walk.Next()) {
        if (walk.box().isOpen) throw EngravingError("a box runs to the end of the file");
        return true;
    }
    if (walk.end() == WalkEnd::Malformed) throw EngravingError("a box is smaller than its header");
    if (walk.end() == WalkEnd::TooMany) throw EngravingError("too many boxes");
    return false;
}

bool Has(const std::vector<Box>& boxes, const char* type) {
    return std::any_of(boxes.begin(), boxes.end(), [&](const Box& box) { return box.type == type; });
}

void CheckMovie(ByteSource& source, const Mp4Layout& layout) {
    if (!Has(layout.parts, "mvhd") || !Has(layout.parts, "trak"))
        throw EngravingError("the movie has no header or no track");
    if (Has(layout.parts, "tagc")) throw EngravingError("the movie has tags outside its user data");
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
    } else if ((box.type == "udta" || box.type == "tagc") && !layout.outerUserData) {
        layout.outerUserData = box.offset;
    }
}

}  // namespace

std::vector<Box> ReadBoxes(ByteSource& source, uint64_t from, uint64_t to, ListEnd end) {
    BoxWalk walk(source, from, to);
    std::vector<Box> boxes;
    while (Next(walk))
        boxes.push_back(walk.box());
    const bool isEnded = end == ListEnd::MayBeZero && walk.left() == 4 && IsZero(source, walk.position());
    if (walk.end() == WalkEnd::CutOff && !isEnded)
        throw EngravingError("a box runs past the end of the one around it");
    return boxes;
}

Mp4Layout ReadLayout(ByteSource& source, uint64_t size) {
    BoxWalk walk(source, 0, size);
    Mp4Layout layout;
    while (Next(walk))
        Take(walk.box(), layout);
    layout.end = walk.position();
    if (walk.end() == WalkEnd::CutOff && !(layout.movie.size > 0 && IsRemnant(source, layout.end)))
        throw EngravingError("a box runs past the end of the file");
    if (layout.movie.size == 0) throw EngravingError("there is no movie in it");
    layout.parts = ReadBoxes(source, layout.movie.content(), layout.movie.end());
    CheckMovie(source, layout);
    return layout;
}

}  // namespace engraving
