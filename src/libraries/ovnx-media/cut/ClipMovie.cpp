#include "libraries/ovnx-media/cut/ClipMovie.h"

#include <algorithm>
#include <numeric>

#include "libraries/ovnx-media/cut/Chapters.h"
#include "libraries/ovnx-media/cut/ClipTables.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"

extern "C" {
#include <libavutil/mathematics.h>
}

namespace ovnxmedia {
namespace {

// Times of frames are multiples of this unit, or nearly so.
constexpr uint32_t kUsualUnit = 90000;

// A unit, in parts of a second, that times of all tracks are multiples of, unless the longest would not fit
// into 32 bits then.
uint32_t UnitFor(const std::vector<ClipTrack>& tracks) {
    uint64_t unit = 1;
    for (const ClipTrack& track : tracks) {
        unit = std::lcm(unit, uint64_t{track.source->unit});
        if (unit > UINT32_MAX) return kUsualUnit;
    }
    for (const ClipTrack& track : tracks)
        if (av_rescale(track.End(), static_cast<int64_t>(unit), track.source->unit) > UINT32_MAX)
            return kUsualUnit;
    return static_cast<uint32_t>(unit);
}

class MovieWriter {
  public:
    MovieWriter(const SourceMovie& source, const std::vector<ClipTrack>& tracks, const ChunkPlan& plan,
                const ShownRange& range, uint64_t base)
        : source_(source), tracks_(tracks), plan_(plan), range_(range), base_(base), unit_(UnitFor(tracks)) {}

    std::string Write() const {
        std::string movie;
        AppendBox(movie, "moov",
                  EditedBoxes(source_.boxes().movie,
                              [this](const BoxView& box, std::string& out) { WriteBox(box, out); }));
        return movie;
    }

  private:
    void WriteBox(const BoxView& box, std::string& out) const {
        if (box.type == "mvhd")
            AppendBox(out, box.type, Header(box));
        else if (box.type == "trak")
            WriteTrack(box, out);
        else if (box.type == "udta")
            AppendBox(out, box.type, WithChaptersOf(box.content, range_.start, range_.end));
        // An index of items by their place in the file does not hold for the clip, and it has no fragments.
        else if (box.type != "mvex" && (box.type != "meta" || box.content.find("iloc") == box.content.npos))
            out += box.whole;
    }

    std::string Header(const BoxView& box) const {
        int64_t longest = 0;
        uint32_t lastId = 0;
        for (const ClipTrack& track : tracks_) {
            longest = std::max(longest, ShownLength(track));
            lastId = std::max(lastId, track.source->id);
        }
        std::string content(box.content);
        PutNumber(content, HasLongTimes(box.content) ? 20 : 12, 4, unit_);
        PutTime(content, 16, 24, longest);
        // Times of a preview, a poster and a selection, which are those of the source.
        for (size_t at = 0; at < 24; at += 4)
            PutNumber(content, (HasLongTimes(box.content) ? 84 : 72) + at, 4, 0);
        // Readers tell the number of sounds by the id that the next track would get.
        if (tracks_.size() < source_.tracks().size())
            PutNumber(content, HasLongTimes(box.content) ? 108 : 96, 4, lastId + 1);
        return content;
    }

    int64_t ShownLength(const ClipTrack& track) const {
        return av_rescale(track.End(), unit_, track.source->unit);
    }

    const ClipTrack* TrackOf(const BoxView& box) const {
        for (const ClipTrack& track : tracks_)
            if (track.source->content.data() == box.content.data()) return &track;
        return nullptr;
    }

    void WriteTrack(const BoxView& box, std::string& out) const {
        const ClipTrack* const track = TrackOf(box);
        if (!track) return;
        AppendBox(out, "trak", EditedBoxes(box.content, [&](const BoxView& each, std::string& boxes) {
                      if (each.type == "tkhd") {
                          std::string header(each.content);
                          PutTime(header, 20, 28, ShownLength(*track));
                          AppendBox(boxes, each.type, header);
                          boxes += Edits(*track);
                      } else if (each.type == "tref") {
                          WriteReferences(each, boxes);
                      } else if (each.type == "mdia") {
                          AppendBox(boxes, each.type, Media(each, *track));
                      } else if (each.type != "edts") {
                          boxes += each.whole;
                      }
                  }));
    }

    std::string Edits(const ClipTrack& track) const {
        const TimeShift shift = ShiftOf(track);
        std::vector<Edit> edits = track.edits;
        for (Edit& edit : edits)
            edit.media = shift.Media(edit.media);
        return WriteEdits(edits, track.source->unit, unit_);
    }

    // Without those to tracks that are not in the clip.
    void WriteReferences(const BoxView& box, std::string& out) const {
        const std::string references =
            EditedBoxes(box.content, [this](const BoxView& kind, std::string& kinds) {
                std::string ids;
                for (uint64_t at = 0; at + 4 <= kind.content.size(); at += 4)
                    for (const ClipTrack& track : tracks_)
                        if (track.source->id == kind.view().U32(at)) ids += kind.content.substr(at, 4);
                if (!ids.empty()) AppendBox(kinds, kind.type, ids);
            });
        if (!references.empty()) AppendBox(out, box.type, references);
    }

    std::string Media(const BoxView& media, const ClipTrack& track) const {
        return EditedBoxes(media.content, [&](const BoxView& box, std::string& out) {
            if (box.type == "mdhd") {
                const Sample& last = track.samples.back();
                std::string header(box.content);
                PutTime(header, 16, 24, last.decoded + last.duration - track.samples.front().decoded);
                AppendBox(out, box.type, header);
            } else if (box.type == "minf") {
                AppendBox(out, box.type,
                          EditedBoxes(box.content, [&](const BoxView& each, std::string& boxes) {
                              if (each.type == "stbl")
                                  AppendBox(boxes, each.type, TablesOf(track));
                              else
                                  boxes += each.whole;
                          }));
            } else {
                out += box.whole;
            }
        });
    }

    std::string TablesOf(const ClipTrack& track) const {
        return WriteTables(track, static_cast<size_t>(&track - tracks_.data()), plan_, base_);
    }

    const SourceMovie& source_;
    const std::vector<ClipTrack>& tracks_;
    const ChunkPlan& plan_;
    const ShownRange range_;
    const uint64_t base_;
    const uint32_t unit_;  // of the movie
};

}  // namespace

std::string WriteMovie(const SourceMovie& source, const std::vector<ClipTrack>& tracks, const ChunkPlan& plan,
                       const ShownRange& range, uint64_t base) {
    return MovieWriter(source, tracks, plan, range, base).Write();
}

}  // namespace ovnxmedia
