#include "libraries/ovnx-media/cut/SourceMovie.h"

#include <algorithm>
#include <cstring>

#include "libraries/ovnx-media/MediaInput.h"
#include "libraries/ovnx-media/cut/Fragments.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"
#include "libraries/ovnx-media/cut/SampleTable.h"

namespace ovnxmedia {
namespace {

constexpr size_t kMaxEntries = 1000;

SourceFile OpenMp4(int fd) {
    SourceFile file(fd);
    char start[kStartSize];
    const size_t got = file.ReadAt(0, start, sizeof(start));
    if (file.HasFailed()) throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
    const char* const demuxer = DemuxerOf({start, got});
    if (!demuxer || std::strcmp(demuxer, "mov") != 0) throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "no MP4 file");
    return file;
}

// The unit in the header of a movie or of a track's media, which have it at the same place.
uint32_t UnitOf(media::ByteView header) {
    const uint32_t unit = header.StartsWith("\1") ? header.U32(20) : header.U32(12);
    if (unit == 0) ThrowDamaged();
    return unit;
}

uint32_t IdOf(std::string_view track) {
    const media::ByteView header(ContentAt(track, {"tkhd"}));
    return header.StartsWith("\1") ? header.U32(20) : header.U32(12);
}

// The tracks that others name as their chapters.
void AddChapterTracks(std::string_view track, std::vector<uint32_t>& ids) {
    const media::ByteView list(ContentAt(track, {"tref", "chap"}));
    for (uint64_t at = 0; at + 4 <= list.size(); at += 4)
        ids.push_back(list.U32(at));
}

// Refuses frames that cannot be copied by themselves: encrypted ones have keys beside them, and those of
// other files are not here.
void CheckEntries(const SourceTrack& track) {
    const std::string_view references = ContentAt(track.content, {"mdia", "minf", "dinf", "dref"});
    const std::vector<BoxView> places = BoxesOf(references.substr(std::min<size_t>(references.size(), 8)));
    const std::vector<BoxView> entries = BoxesOf(track.descriptions());
    if (entries.size() > kMaxEntries) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many sample descriptions");
    for (const BoxView& entry : entries) {
        if (entry.type == "encv" || entry.type == "enca" || entry.type == "encs" || entry.type == "drms")
            throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "it is encrypted");
        const size_t place = entry.view().U16(6);
        if (place >= 1 && place <= places.size() && (places[place - 1].view().U32(0) & 1) == 0)
            throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "its frames are in another file");
    }
}

// A recorder does not know how long its last frame lasts, and some write 0. As long as the one before, then;
// where edits end with the track, they end with the frame.
void MendLastDuration(SourceTrack& track, uint32_t movieUnit) {
    std::vector<Sample>& samples = track.table.samples;
    if (samples.size() < 2 || samples.back().duration > 0 || track.table.hasRuns) return;
    const int64_t rounding = track.unit / movieUnit + 1;
    const int64_t before = track.table.End();
    samples.back().duration = samples[samples.size() - 2].duration;
    for (Edit& edit : track.edits)
        if (edit.media + edit.length >= before - rounding)
            edit.length = std::max(edit.length, track.table.End() - edit.media);
}

}  // namespace

std::string_view SourceTrack::tables() const {
    return ContentAt(content, {"mdia", "minf", "stbl"});
}

std::string_view SourceTrack::descriptions() const {
    const std::string_view box = ContentAt(tables(), {"stsd"});
    return box.substr(std::min<size_t>(box.size(), 8));
}

std::string_view SourceTrack::EntryType(uint32_t number) const {
    const std::string_view entry = Entry(number);
    return entry.empty() ? entry : std::string_view(entry.data() - 4, 4);
}

std::string_view SourceTrack::Entry(uint32_t number) const {
    const std::vector<BoxView> entries = BoxesOf(descriptions());
    return number >= 1 && number <= entries.size() ? entries[number - 1].content : std::string_view();
}

SourceMovie::SourceMovie(int fd, const Budget& budget, Samples samples)
    : file_(OpenMp4(fd)),
      boxes_(ReadMovieFile(file_, budget)),
      hasSamples_(samples == Samples::Read || !boxes_.fragments.empty()),
      samplesLeft_(kMaxSamples) {
    const uint32_t movieUnit = UnitOf(media::ByteView(ContentAt(boxes_.movie, {"mvhd"})));
    for (const BoxView& box : BoxesOf(boxes_.movie))
        if (box.type == "trak") ReadTrack(box.content, movieUnit, budget);
    ReadFragments(
        file_, boxes_.fragments, boxes_.movie,
        [this](uint32_t id) -> std::vector<Sample>* {
            for (SourceTrack& track : tracks_)
                if (track.id == id) return &track.table.samples;
            return nullptr;
        },
        samplesLeft_, budget);
    for (SourceTrack& track : tracks_)
        MendLastDuration(track, movieUnit);
}

void SourceMovie::ReadTrack(std::string_view content, uint32_t movieUnit, const Budget& budget) {
    SourceTrack track;
    track.content = content;
    track.handler = media::ByteView(ContentAt(content, {"mdia", "hdlr"})).Sub(8, 4).str();
    AddChapterTracks(content, chapterTracks_);
    // Hints for servers refer to samples by their numbers.
    if (track.handler == "hint") return;
    if (tracks_.size() == MediaInput::kMaxStreams) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many tracks");
    track.id = IdOf(content);
    track.unit = UnitOf(media::ByteView(ContentAt(content, {"mdia", "mdhd"})));
    track.edits = ReadEdits(content, track.unit, movieUnit);
    if (hasSamples_) track.table = ReadSampleTable(track.tables(), track.IsSound(), samplesLeft_, budget);
    samplesLeft_ -= track.table.samples.size();
    CheckEntries(track);
    tracks_.push_back(std::move(track));
}

const SourceTrack& SourceMovie::Video() const {
    for (const SourceTrack& track : tracks_)
        if (track.IsVideo() &&
            std::find(chapterTracks_.begin(), chapterTracks_.end(), track.id) == chapterTracks_.end())
            return track;
    throw Failure(OVNX_MEDIA_NO_VIDEO, "there is no video in it");
}

}  // namespace ovnxmedia
