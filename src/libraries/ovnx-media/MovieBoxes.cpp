#include "libraries/ovnx-media/MovieBoxes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <optional>

#include <unistd.h>

namespace ovnxmedia {
namespace {

// Pictures may be among it, but hardly many.
constexpr uint64_t kMaxUserData = 16u << 20;
// In a row; a file in fragments has two for each of them, behind the "moov".
constexpr int kMaxBoxes = 100000;

struct Box {
    uint32_t type = 0;
    uint64_t start = 0;    // of the header
    uint64_t content = 0;  // of what follows the header
    uint64_t end = 0;
};

constexpr uint32_t BoxType(const char (&name)[5]) {
    uint32_t type = 0;
    for (int i = 0; i < 4; ++i)
        type = type << 8 | static_cast<uint8_t>(name[i]);
    return type;
}

[[noreturn]] void ThrowDamaged() {
    throw Failure(OVNX_MEDIA_DAMAGED, "its boxes do not fit each other");
}

uint64_t Number(const uint8_t* bytes, size_t size) {
    uint64_t value = 0;
    while (size-- > 0)
        value = value << 8 | *bytes++;
    return value;
}

bool ReadFully(int fd, void* buffer, size_t size, uint64_t position) {
    auto* to = static_cast<char*>(buffer);
    while (size > 0) {
        const ssize_t got = pread(fd, to, size, static_cast<off_t>(position));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw Failure(OVNX_MEDIA_UNREADABLE, std::strerror(errno));
        if (got == 0) return false;
        to += got;
        position += static_cast<uint64_t>(got);
        size -= static_cast<size_t>(got);
    }
    return true;
}

// The box whose header is in `bytes`, of which there are 16 unless it ends before.
Box HeaderOf(const std::array<uint8_t, 16>& bytes, uint64_t at, uint64_t end) {
    const uint64_t left = end - at;
    uint64_t size = Number(bytes.data(), 4);
    const uint64_t header = size == 1 ? 16 : 8;
    if (size == 1 && left >= 16) size = Number(bytes.data() + 8, 8);
    if (size == 0) size = left;  // it goes on to the end
    if (size < header || size > left) ThrowDamaged();
    return {static_cast<uint32_t>(Number(bytes.data() + 4, 4)), at, at + header, at + size};
}

// The boxes of a file between two positions, until `visit` gives false. What follows the last whole box is
// passed over: a recording may have been cut off in it.
void VisitBoxes(int fd, uint64_t at, uint64_t end, const Budget& budget,
                const std::function<bool(const Box&)>& visit) {
    for (int count = 0; end - at >= 8; ++count) {
        budget.Check();
        if (count == kMaxBoxes) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many boxes");
        std::array<uint8_t, 16> header{};
        if (!ReadFully(fd, header.data(), std::min<uint64_t>(16, end - at), at)) return;
        const Box box = HeaderOf(header, at, end);
        if (!visit(box)) return;
        at = box.end;
    }
}

std::optional<Box> Movie(int fd, uint64_t fileSize, const Budget& budget) {
    std::optional<Box> movie;
    VisitBoxes(fd, 0, fileSize, budget, [&movie](const Box& box) {
        if (box.type == BoxType("moov")) movie = box;
        return !movie;
    });
    return movie;
}

// The boxes in `bytes` put together again, with what `edit` appends in the place of each.
std::string Edited(std::string_view bytes,
                   const std::function<void(uint32_t type, std::string_view whole, std::string& out)>& edit) {
    std::string out;
    for (size_t at = 0; at < bytes.size();) {
        const size_t left = bytes.size() - at;
        std::array<uint8_t, 16> header{};
        std::memcpy(header.data(), bytes.data() + at, std::min<size_t>(header.size(), left));
        const Box box = left < 8 ? Box{} : HeaderOf(header, at, bytes.size());
        // None of ours needs the longer header.
        if (left < 8 || box.content != at + 8) ThrowDamaged();
        edit(box.type, bytes.substr(at, box.end - at), out);
        at = box.end;
    }
    return out;
}

std::string_view ContentOf(std::string_view whole) {
    return whole.substr(8);
}

void Append(std::string& out, uint32_t type, std::string_view content) {
    for (const uint64_t number : {uint64_t{content.size() + 8}, uint64_t{type}})
        for (int shift = 24; shift >= 0; shift -= 8)
            out += static_cast<char>(number >> shift);
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
    return Number(reinterpret_cast<const uint8_t*>(bytes.data()) + at, size);
}

// Sets the length in a movie's or track's header: at one place in version 0, at another in version 1.
std::string WithDuration(std::string_view whole, size_t at0, size_t at1, uint64_t duration) {
    std::string box(whole);
    const bool isLong = Get(box, 8, 1) != 0;
    Put(box, 8 + (isLong ? at1 : at0), isLong ? 8 : 4, duration);
    return box;
}

// The last edit is what shows the track; one before it is a wait.
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
    return Edited(track, [duration](uint32_t type, std::string_view whole, std::string& out) {
        if (type == BoxType("tkhd"))
            out += WithDuration(whole, 20, 28, duration);
        else if (type == BoxType("edts"))
            Append(out, type,
                   Edited(ContentOf(whole), [duration](uint32_t, std::string_view list, std::string& edits) {
                       edits += WithEdit(list, duration);
                   }));
        else
            out += whole;
    });
}

}  // namespace

std::string ReadUserData(int fd, uint64_t fileSize, const Budget& budget) {
    const std::optional<Box> movie = Movie(fd, fileSize, budget);
    std::string userData;
    if (!movie) return userData;
    VisitBoxes(fd, movie->content, movie->end, budget, [&](const Box& box) {
        if (box.type != BoxType("udta")) return true;
        const uint64_t content = box.end - box.content;
        if (userData.size() + content + 8 > kMaxUserData)
            throw Failure(OVNX_MEDIA_OVER_LIMIT, "what describes it is too large");
        std::string bytes(content, '\0');
        if (!ReadFully(fd, bytes.data(), bytes.size(), box.content)) ThrowDamaged();
        Append(userData, box.type, bytes);
        return true;
    });
    return userData;
}

MovieRoom ReadMovieRoom(int fd, uint64_t fileSize) {
    MovieRoom room;
    VisitBoxes(fd, 0, fileSize, Budget(), [&](const Box& box) {
        if (box.type == BoxType("moov")) {
            room.start = box.start;
            room.movie.resize(box.end - box.start);
            if (!ReadFully(fd, room.movie.data(), room.movie.size(), box.start)) ThrowDamaged();
        }
        if (!room.movie.empty() && (box.type == BoxType("moov") || box.type == BoxType("free")))
            room.end = box.end;
        return room.movie.empty() || box.end == room.end;
    });
    if (room.movie.empty()) ThrowDamaged();
    return room;
}

std::string FinishMovie(std::string_view movie, const std::vector<uint64_t>& durations,
                        std::string_view userData) {
    const uint64_t longest = *std::max_element(durations.begin(), durations.end());
    size_t track = 0;
    std::string content =
        Edited(ContentOf(movie), [&](uint32_t type, std::string_view whole, std::string& out) {
            if (type == BoxType("mvhd"))
                out += WithDuration(whole, 16, 24, longest);
            else if (type == BoxType("trak") && track < durations.size())
                Append(out, type, WithTrackLengths(ContentOf(whole), durations[track++]));
            else if (type != BoxType("udta"))
                out += whole;
        });
    if (track != durations.size()) ThrowDamaged();
    content += userData;
    std::string finished;
    Append(finished, BoxType("moov"), content);
    return finished;
}

}  // namespace ovnxmedia
