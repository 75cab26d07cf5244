// What an import makes of a picture: the file that it was with bytes added or, in a JPEG, metadata replaced;
// the same picture, which the import knows again; and the product's own reader finds the marks.
#include <string>

#include "fuzz/Plain.h"
#include "fuzz/QuietLog.h"
#include "importing/JpegMarks.h"
#include "importing/PngMarks.h"
#include "plugin-modules/Gallery/src/media/JpegWalk.h"
#include "plugin-modules/Gallery/src/media/PngWalk.h"

namespace {

using importing::Piece;
using importing::Splice;
using plain::Demand;

struct Marked {
    std::string file;
    std::string picture;
    std::string copied;
};

Marked Apply(const Splice& splice, std::string_view source) {
    Marked marked;
    uint64_t end = 0;
    for (const Piece& piece : splice.pieces()) {
        // In their order, each byte at most once.
        Demand(piece.size == 0 || piece.from >= end);
        const std::string_view part = plain::At(source, piece.from, piece.size);
        Demand(part.size() == piece.size);
        end = piece.size > 0 ? piece.from + piece.size : end;
        marked.file.append(piece.bytes).append(part);
        marked.copied.append(part);
        if (piece.isPicture) marked.picture.append(part);
    }
    return marked;
}

using Mark = Splice (*)(media::ByteSource&, uint64_t, const importing::CaptureMarks&);

Marked MarkWith(Mark mark, std::string_view file, const importing::CaptureMarks& marks) {
    media::MemorySource source(file);
    return Apply(mark(source, file.size(), marks), file);
}

template <typename Walk>
void Try(Mark mark, Walk walk, std::string_view file) {
    Marked marked;
    try {
        marked = MarkWith(mark, file, {"Rustwind Rally", ""});
    } catch (const importing::ImportError&) {
        return;
    }
    if (mark == importing::MarkPng) Demand(marked.copied == file);
    Demand(plain::At(file, file.size() - 1, 1) ==
           std::string_view(marked.file).substr(marked.file.size() - 1));

    media::MemorySource source(marked.file);
    media::ByteCursor cursor(source);
    media::SniffResult result;
    Demand(walk(cursor, result) == media::kInspected && result.isOwn && result.fileSource == "OVS_Share");
    try {
        Demand(MarkWith(mark, marked.file, {"G", "Photo finish"}).picture == marked.picture);
    } catch (const importing::ImportError&) {
        // Its texts may leave no room for those of another game.
        Demand(mark == importing::MarkJpeg);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    Try(importing::MarkPng, media::WalkPng, file);
    Try(importing::MarkJpeg, media::WalkJpeg, file);
    return 0;
}
