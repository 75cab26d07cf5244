#include "libraries/ovnx-media/MovieBoxes.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "libraries/media-bytes/Boxes.h"
#include "libraries/media-bytes/ByteView.h"

namespace ovnxmedia {
namespace {

using media::Box;
using media::BoxHeader;
using media::BoxWalk;
using media::WalkEnd;

// User data may contain pictures, but hardly many.
constexpr uint64_t kMaxUserData = 16u << 20;

[[noreturn]] void ThrowDamaged() {
    throw Failure(OVNX_MEDIA_DAMAGED, "its boxes do not fit each other");
}

// The next box of a file; false at the end. A file may end within the header of its last box: a recording
// that was cut off there.
bool Next(BoxWalk& walk, const SourceFile& file, const Budget& budget) {
    budget.Check();
    if (walk.Next()) return true;
    if (file.HasFailed()) throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
    if (walk.end() == WalkEnd::TooMany) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many boxes");
    if (walk.end() == WalkEnd::Malformed || walk.left() >= 8) ThrowDamaged();
    return false;
}

std::string BytesOf(SourceFile& file, uint64_t from, uint64_t to) {
    std::string bytes(to - from, '\0');
    if (file.ReadAt(from, bytes.data(), bytes.size()) < bytes.size()) ThrowDamaged();
    return bytes;
}

std::optional<Box> Movie(SourceFile& file, const Budget& budget) {
    BoxWalk walk(file, 0, file.size());
    while (Next(walk, file, budget))
        if (walk.box().type == "moov") return walk.box();
    return {};
}

// Reassembles the boxes in `bytes`, each replaced by what `edit` appends for it.
std::string Edited(
    std::string_view bytes,
    const std::function<void(const std::string& type, std::string_view whole, std::string& out)>& edit) {
    std::string out;
    media::MemorySource source(bytes);
    BoxWalk walk(source, 0, bytes.size());
    while (walk.Next()) {
        const Box& box = walk.box();
        // FFmpeg writes none that needs the longer header.
        if (box.headerSize != 8) ThrowDamaged();
        edit(box.type, bytes.substr(box.offset, box.size), out);
    }
    if (walk.end() != WalkEnd::Complete) ThrowDamaged();
    return out;
}

std::string_view ContentOf(std::string_view whole) {
    return whole.substr(8);
}

void Append(std::string& out, std::string_view type, std::string_view content) {
    out += BoxHeader(content.size() + 8, type);
    out += content;
}

void Put(std::string& bytes, size_t at, size_t size, uint64_t value) {
    if (at + size > bytes.size()) ThrowDamaged();
    if (size == 4 && value > UINT32_MAX) throw Failure(OVNX_MEDIA_OVER_LIMIT, "the clip is too long");
    while (size-- > 0)
        bytes[at++] = static_cast<char>(value >> 8 * size);
}

uint64_t Get(std::string_view bytes, size_t at, size_t size) {
    if (at + size > bytes.size()) ThrowDamaged();
    const media::ByteView view(bytes.substr(at));
    if (size == 8) return view.U64(0);
    return size == 4 ? view.U32(0) : view.Little(0, 1);
}

// Sets the duration in the header of a movie or track, which lies at `at0` in version 0 and at `at1` in 1.
std::string WithDuration(std::string_view whole, size_t at0, size_t at1, uint64_t duration) {
    std::string box(whole);
    const bool isLong = Get(box, 8, 1) != 0;
    Put(box, 8 + (isLong ? at1 : at0), isLong ? 8 : 4, duration);
    return box;
}

// The last edit shows the track; one before it is a wait.
std::string WithEdit(std::string_view editList, uint64_t duration) {
    std::string box(editList);
    const size_t width = Get(box, 8, 1) != 0 ? 8 : 4;
    const size_t entry = 2 * width + 4;
    const uint64_t count = Get(box, 12, 4);
    if (count < 1 || count > 2) ThrowDamaged();
    const uint64_t wait = count == 2 ? Get(box, 16, width) : 0;
    Put(box, 16 + (count - 1) * entry, width, duration - std::min(wait, duration));
    return box;
}

std::string WithTrackLengths(std::string_view track, uint64_t duration) {
    return Edited(track, [duration](const std::string& type, std::string_view whole, std::string& out) {
        if (type == "tkhd")
            out += WithDuration(whole, 20, 28, duration);
        else if (type == "edts")
            Append(out, type,
                   Edited(ContentOf(whole),
                          [duration](const std::string&, std::string_view list, std::string& edits) {
                              edits += WithEdit(list, duration);
                          }));
        else
            out += whole;
    });
}

}  // namespace

std::string ReadUserData(SourceFile& file, const Budget& budget) {
    std::string userData;
    const std::optional<Box> movie = Movie(file, budget);
    if (!movie) return userData;
    BoxWalk walk(file, movie->content(), movie->end());
    while (Next(walk, file, budget)) {
        const Box& box = walk.box();
        if (box.type != "udta") continue;
        if (userData.size() + box.size > kMaxUserData)
            throw Failure(OVNX_MEDIA_OVER_LIMIT, "too much user data");
        Append(userData, box.type, BytesOf(file, box.content(), box.end()));
    }
    return userData;
}

MovieRoom ReadMovieRoom(SourceFile& file) {
    const Budget budget;
    BoxWalk walk(file, 0, file.size());
    MovieRoom room;
    while (Next(walk, file, budget)) {
        const Box& box = walk.box();
        if (!room.movie.empty() && box.type != "free") break;
        if (box.type == "moov") {
            room.start = box.offset;
            room.movie = BytesOf(file, box.offset, box.end());
        }
        if (!room.movie.empty()) room.end = box.end();
    }
    if (room.movie.empty()) ThrowDamaged();
    return room;
}

std::string FinishMovie(std::string_view movie, const std::vector<uint64_t>& durations,
                        std::string_view userData) {
    const uint64_t longest = *std::max_element(durations.begin(), durations.end());
    size_t track = 0;
    std::string content =
        Edited(ContentOf(movie), [&](const std::string& type, std::string_view whole, std::string& out) {
            if (type == "mvhd")
                out += WithDuration(whole, 16, 24, longest);
            else if (type == "trak" && track < durations.size())
                Append(out, type, WithTrackLengths(ContentOf(whole), durations[track++]));
            else if (type != "udta")
                out += whole;
        });
    if (track != durations.size()) ThrowDamaged();
    content += userData;
    std::string finished;
    Append(finished, "moov", content);
    return finished;
}

}  // namespace ovnxmedia
