#include "libraries/ovnx-media/convert/Mp4Movie.h"

#include <algorithm>
#include <utility>

#include "libraries/media-bytes/ByteView.h"
#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"

extern "C" {
#include <libavutil/mathematics.h>
}

namespace ovnxmedia {
namespace {

constexpr size_t kListStart = 8;

// Of a movie, or of a track's media.
int64_t UnitOf(std::string_view header) {
    const media::ByteView view(header);
    const uint32_t unit = view.U32(HasLongTimes(header) ? 20 : 12);
    if (unit == 0) ThrowDamaged();
    return unit;
}

// The muxer leaves out a track when it keeps back all of its packets, and numbers the others as if it were
// there.
void CheckIsThere(std::string_view track, size_t index) {
    const std::string_view header = ContentAt(track, {"tkhd"});
    if (media::ByteView(header).U32(HasLongTimes(header) ? 20 : 12) != index + 1)
        throw Failure(OVNX_MEDIA_DAMAGED, "a track of it begins with what an MP4 does not take");
}

// Puts in how long the last edit is, and returns how long all are.
int64_t PutLength(std::string& list, int64_t length) {
    const bool isLong = HasLongTimes(list);
    const size_t row = isLong ? 20 : 12;
    const uint32_t count = media::ByteView(list).U32(4);
    if (count == 0) return length;
    const size_t last = kListStart + (count - 1) * row;
    PutTime(list, last, last, length);
    int64_t all = 0;
    const media::ByteView view(list);
    for (size_t at = kListStart; at <= last; at += row)
        all += isLong ? static_cast<int64_t>(view.U64(at)) : view.U32(at);
    return all;
}

// The last run of samples of one group goes on to the end.
std::string WithLastRunTo(std::string_view groups, uint32_t samples) {
    std::string content(groups);
    const size_t start = content.substr(0, 1) == "\1" ? 16 : 12;
    const media::ByteView view(groups);
    const uint32_t count = view.U32(start - 4);
    if (count == 0) return content;
    uint64_t before = 0;
    for (uint32_t row = 0; row + 1 < count; ++row)
        before += view.U32(start + row * size_t{8});
    if (before < samples) PutNumber(content, start + (count - 1) * size_t{8}, 4, samples - before);
    return content;
}

// The movie, with what describes its tracks and no tables yet.
class Frame {
  public:
    Frame(std::string_view movie, const std::vector<const TrackTables*>& tracks, size_t recorded)
        : tracks_(tracks),
          recorded_(recorded),
          unit_(UnitOf(ContentAt(movie, {"mvhd"}))),
          boxes_(EditedBoxes(movie, [this](const BoxView& box, std::string& out) {
              if (box.type == "trak")
                  AppendBox(out, box.type, Track(box.content));
              else
                  out += box.whole;
          })) {
        if (next_ < recorded_) ThrowDamaged();
    }

    std::string Write() const {
        std::string movie;
        AppendBox(movie, "moov", EditedBoxes(boxes_, [this](const BoxView& box, std::string& out) {
                      std::string content(box.content);
                      if (box.type == "mvhd") PutTime(content, 16, 24, longest_);
                      AppendBox(out, box.type, content);
                  }));
        return movie;
    }

  private:
    std::string Track(std::string_view track) {
        const TrackTables& tables = *tracks_.at(next_);
        if (next_++ >= recorded_)
            return Edited(track, "mdia", [&](auto media) { return Media(media, tables, false); });
        CheckIsThere(track, next_ - 1);
        const int64_t unit = UnitOf(ContentAt(track, {"mdia", "mdhd"}));
        const int64_t length = av_rescale_rnd(tables.ShownLength(), unit_, unit, AV_ROUND_UP);
        std::string edits(ContentAt(track, {"edts", "elst"}));
        const int64_t shown = edits.empty() ? length : PutLength(edits, length);
        longest_ = std::max(longest_, shown);
        return EditedBoxes(track, [&](const BoxView& box, std::string& out) {
            std::string content(box.content);
            if (box.type == "tkhd") PutTime(content, 20, 28, shown);
            if (box.type == "edts") content = Edited(content, "elst", [&](auto) { return edits; });
            if (box.type == "mdia") content = Media(content, tables, true);
            AppendBox(out, box.type, content);
        });
    }

    static std::string Media(std::string_view media, const TrackTables& tables, bool isRecorded) {
        return EditedBoxes(media, [&](const BoxView& box, std::string& out) {
            std::string content(box.content);
            if (box.type == "mdhd" && isRecorded) PutTime(content, 16, 24, tables.Length());
            if (box.type == "minf")
                content =
                    Edited(content, "stbl", [&](auto old) { return Descriptions(old, tables.samples()); });
            AppendBox(out, box.type, content);
        });
    }

    static std::string Descriptions(std::string_view old, uint32_t samples) {
        return EditedBoxes(old, [&](const BoxView& box, std::string& out) {
            if (box.type == "stsd" || box.type == "sgpd") out += box.whole;
            if (box.type == "sbgp") AppendBox(out, box.type, WithLastRunTo(box.content, samples));
        });
    }

    // With another content of the boxes of one type.
    template <typename Edit>
    static std::string Edited(std::string_view boxes, std::string_view type, const Edit& edit) {
        return EditedBoxes(boxes, [&](const BoxView& box, std::string& out) {
            if (box.type == type)
                AppendBox(out, type, edit(box.content));
            else
                out += box.whole;
        });
    }

    const std::vector<const TrackTables*>& tracks_;
    const size_t recorded_;
    const int64_t unit_;
    size_t next_ = 0;  // track
    int64_t longest_ = 0;
    const std::string boxes_;  // last: it is made of the rest
};

// Makes room for `size` bytes at the end of the innermost of boxes that contain each other.
size_t MakeRoom(std::string& movie, const std::vector<std::string_view>& contents, uint64_t size) {
    for (const std::string_view content : contents) {
        const auto header = static_cast<size_t>(content.data() - movie.data()) - 8;
        PutNumber(movie, header, 4, media::ByteView(movie).U32(header) + size);
    }
    return static_cast<size_t>(contents.back().data() + contents.back().size() - movie.data());
}

}  // namespace

void WriteMovieOf(std::string_view movie, const std::vector<const TrackTables*>& tracks, size_t recorded,
                  const std::function<void(std::string_view)>& write) {
    std::string frame = Frame(movie, tracks, recorded).Write();
    const std::string_view all(frame.data() + 8, frame.size() - 8);
    std::vector<size_t> ends;  // of each track's tables, of which nothing is there yet
    for (const BoxView& box : BoxesOf(all)) {
        if (box.type != "trak") continue;
        const std::string_view media = ContentAt(box.content, {"mdia"});
        const std::string_view information = ContentAt(media, {"minf"});
        const std::string_view stbl = ContentAt(information, {"stbl"});
        if (stbl.empty()) ThrowDamaged();
        ends.push_back(
            MakeRoom(frame, {all, box.content, media, information, stbl}, tracks.at(ends.size())->Size()));
    }
    size_t done = 0;
    for (size_t i = 0; i < ends.size(); ++i) {
        write(std::string_view(frame).substr(done, ends[i] - done));
        tracks[i]->Write(write);
        done = ends[i];
    }
    write(std::string_view(frame).substr(done));
}

}  // namespace ovnxmedia
