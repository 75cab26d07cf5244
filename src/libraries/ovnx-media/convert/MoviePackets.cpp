#include "libraries/ovnx-media/convert/MoviePackets.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "base/SlabMemory.h"
#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/convert/ReadCount.h"
#include "libraries/ovnx-media/cut/SampleTable.h"

namespace ovnxmedia {
namespace {

// Small enough to stay in the processor's cache until they are digested.
constexpr size_t kPiece = size_t{256} << 10;

// The samples of a track: out of its tables, or of fragments, which were read to find them.
class TrackSamples {
  public:
    TrackSamples(const SourceTrack& track, bool isRead, const Budget& budget)
        : samples_(track.table.samples) {
        if (!isRead) walk_ = std::make_unique<SampleWalk>(track.tables(), track.IsSound(), budget);
        Move();
    }

    // Null at the end.
    const Sample* Next() const { return isOver_ ? nullptr : &next_; }
    void Move() {
        if (walk_) {
            isOver_ = !walk_->Next(next_);
        } else {
            isOver_ = at_ == samples_.size();
            if (!isOver_) next_ = samples_[at_++];
        }
    }

  private:
    const std::vector<Sample>& samples_;
    size_t at_ = 0;
    std::unique_ptr<SampleWalk> walk_;
    Sample next_;
    bool isOver_ = false;
};

// A piece of a file, for parts that follow each other.
class Window {
  public:
    explicit Window(SourceFile& file)
        : file_(file), bytes_(static_cast<char*>(KXP::AllocateInSlab(kPiece))) {}

    // The first of these bytes, at least one.
    std::string_view At(uint64_t from, uint64_t size) {
        if (from < from_ || from - from_ >= size_) {
            from_ = from;
            size_ = file_.ReadAt(from, bytes_.get(), kPiece);
            if (file_.HasFailed()) throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
            if (size_ == 0) throw Failure(OVNX_MEDIA_DAMAGED, "a part of it is missing");
        }
        const auto at = static_cast<size_t>(from - from_);
        return {bytes_.get() + at, static_cast<size_t>(std::min<uint64_t>(size, size_ - at))};
    }

  private:
    SourceFile& file_;
    const std::unique_ptr<char[], KXP::SlabDeleter> bytes_;
    uint64_t from_ = 0;
    size_t size_ = 0;
};

// The track whose next sample comes first in the file; as many as there are at the end.
size_t NextTrack(const std::vector<TrackSamples>& tracks) {
    size_t chosen = tracks.size();
    for (size_t i = 0; i < tracks.size(); ++i)
        if (const Sample* const sample = tracks[i].Next())
            if (chosen == tracks.size() || sample->offset < tracks[chosen].Next()->offset) chosen = i;
    return chosen;
}

}  // namespace

void ReadMoviePackets(SourceMovie& movie, const PacketListener& listener, const Budget& budget) {
    std::vector<TrackSamples> tracks;
    for (const SourceTrack& track : movie.tracks())
        if (track.IsVideo() || track.IsSound()) tracks.emplace_back(track, movie.HasSamples(), budget);
    Window window(movie.file());
    ReadCount count(listener);
    for (size_t track = NextTrack(tracks); track < tracks.size(); track = NextTrack(tracks)) {
        budget.Check();
        const Sample& sample = *tracks[track].Next();
        for (uint64_t done = 0; done < sample.size;) {
            const std::string_view part = window.At(sample.offset + done, sample.size - done);
            if (listener.onPacket) listener.onPacket(static_cast<uint32_t>(track), part, nullptr);
            count.Add(part.size());
            done += part.size();
        }
        tracks[track].Move();
    }
    count.Flush();
}

}  // namespace ovnxmedia
