#include "libraries/ovnx-media/cut/ClipTrack.h"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>

#include "libraries/ovnx-media/cut/RandomAccess.h"

extern "C" {
#include <libavutil/mathematics.h>
}

namespace ovnxmedia {
namespace {

constexpr int64_t kTicks = 10000000;

// The sample on view at a time of the track: the last one that is shown by then.
std::optional<size_t> ShownAt(const std::vector<Sample>& samples, int64_t time) {
    std::optional<size_t> found;
    for (size_t i = 0; i < samples.size(); ++i)
        if (samples[i].shown <= time && (!found || samples[i].shown >= samples[*found].shown)) found = i;
    return found;
}

std::optional<size_t> FirstShownIn(const std::vector<Sample>& samples, int64_t from, int64_t to) {
    std::optional<size_t> found;
    for (size_t i = 0; i < samples.size(); ++i)
        if (samples[i].shown >= from && samples[i].shown < to &&
            (!found || samples[i].shown < samples[*found].shown))
            found = i;
    return found;
}

// The longest that more than one sample lasts. What is longer has a gap after it that nobody hears.
uint32_t UsualDuration(const std::vector<Sample>& samples) {
    uint32_t longest = 0;
    std::unordered_set<uint32_t> seen;
    for (const Sample& sample : samples)
        if (!seen.insert(sample.duration).second) longest = std::max(longest, sample.duration);
    return longest > 0 ? longest : UINT32_MAX;
}

// Whether frames borrow room from several before, as those of MP3 do.
bool IsMp3(const SourceTrack& track, const Sample& sample) {
    if (track.EntryType(sample.entry) == ".mp3") return true;
    // The object type of MP3 and the stream type of sound in the setup of an "mp4a".
    const std::string_view entry = track.Entry(sample.entry);
    return entry.find("\x6b\x15") != entry.npos || entry.find("\x69\x15") != entry.npos;
}

// How much of a sound is decoded before what is heard, for the decoder to be in the state that it would have
// in the source. In units of the track.
int64_t LeadOf(const SourceTrack& track, const Sample& sample) {
    const int64_t each = sample.duration / std::max(1u, sample.count);
    if (each <= 1) return 0;  // uncompressed
    // The format asks for 80 ms, after which one can still tell the difference.
    if (track.EntryType(sample.entry) == "Opus") return int64_t{track.unit} * 2 / 5;
    return each * (IsMp3(track, sample) ? 12 : 2);
}

class TrackCutter {
  public:
    TrackCutter(const SourceTrack& track, SourceFile& file, const Budget& budget)
        : track_(track), samples_(track.table.samples), file_(file), budget_(budget) {
        result_.source = &track;
        if (HasLead() && !track.table.hasRuns) usual_ = UsualDuration(samples_);
    }

    ClipTrack Cut(int64_t start, int64_t end) {
        const int64_t mediaEnd = track_.table.End();
        for (const Edit& edit : track_.edits) {
            budget_.Check();
            const int64_t from = std::max(edit.start, start);
            const int64_t to = std::min({edit.end(), end, edit.start + (mediaEnd - edit.media)});
            if (from < to) Show({from - start, edit.media + (from - edit.start), to - from});
        }
        if (!result_.edits.empty()) Collect();
        return std::move(result_);
    }

  private:
    bool HasLead() const { return track_.IsSound() && !track_.table.hasSyncTable; }

    void Show(Edit edit) {
        const int64_t end = edit.media + edit.length;
        std::optional<size_t> first = HasLead() ? FirstHeard(edit.media, end) : ShownAt(samples_, edit.media);
        if (!first) first = FirstShownIn(samples_, edit.media, end);
        if (!first) return;
        // Nothing is shown before the first sample.
        const int64_t wait = std::max<int64_t>(0, samples_[*first].shown - edit.media);
        edit = {edit.start + wait, edit.media + wait, edit.length - wait};
        size_t last = *first;
        for (size_t i = last; i < samples_.size(); ++i)
            if (samples_[i].shown < end) last = i;
        // Players take the last packet to be as long as the edit, and would not find its beginning within it.
        if (HasLead() && last == *first && last + 1 < samples_.size()) ++last;
        const size_t start = StartFor(*first, edit.media);
        begins_.emplace_back(start, *first);
        first_ = std::min(first_, start);
        last_ = std::max(last_, last);
        shownFrom_ = std::min(shownFrom_, edit.media);
        shownTo_ = std::max(shownTo_, end);
        result_.edits.push_back(edit);
    }

    // A sound that has ended is not on until the next one.
    std::optional<size_t> FirstHeard(int64_t from, int64_t to) const {
        for (size_t i = 0; i < samples_.size(); ++i)
            if (HeardEnd(samples_[i]) > from && samples_[i].shown < to) return i;
        return {};
    }

    int64_t HeardEnd(const Sample& sample) const { return sample.shown + std::min(sample.duration, usual_); }

    size_t StartFor(size_t first, int64_t media) {
        if (!HasLead()) return RandomAccess(track_, file_, budget_).StartFor(first);
        const int64_t from = media - LeadOf(track_, samples_[first]);
        while (first > 0 && samples_[first - 1].end() > from)
            --first;
        return first;
    }

    void Collect() {
        for (size_t i = first_; i <= last_; ++i) {
            if (IsUseless(i)) continue;
            result_.samples.push_back(samples_[i]);
            if (IsPassedOver(i)) result_.samples.back().isSync = false;
        }
        if (HasLead() && !track_.table.hasRuns) CloseGapsInLead();
        if (track_.table.hasRuns) {
            TrimFirstRun(result_.samples.front());
            TrimLastRun(result_.samples.back());
        }
        if (track_.IsText()) TrimTexts(result_.samples.front(), result_.samples.back());
    }

    // Pictures that precede the first one but are stored after it refer to what is not in the clip.
    bool IsUseless(size_t sample) const {
        return sample > first_ && first_ > 0 && track_.IsVideo() &&
               samples_[sample].shown < samples_[first_].shown &&
               !RandomAccess(track_, file_, budget_).IsCounted(sample);
    }

    // Players would begin at any later keyframe, also where decoding from there does not show the frame
    // whole, and would end at the first one that lasts until the end, also where others follow that are shown
    // earlier.
    bool IsPassedOver(size_t sample) const {
        if (HasLead()) return false;
        if (sample < last_ && samples_[sample].end() >= shownTo_) return sample > first_;
        return std::any_of(begins_.begin(), begins_.end(), [sample](const std::pair<size_t, size_t>& each) {
            return sample > each.first && sample <= each.second;
        });
    }

    // Players pass over as many samples as there are between the times of the lead and the beginning.
    void CloseGapsInLead() {
        std::vector<Sample>& samples = result_.samples;
        size_t i = 0;
        while (i + 1 < samples.size() && HeardEnd(samples[i]) <= shownFrom_)
            ++i;
        for (; i > 0; --i) {
            Sample& before = samples[i - 1];
            before.duration = std::min(before.duration, usual_);
            before.decoded = before.shown = samples[i].decoded - before.duration;
        }
    }

    void TrimFirstRun(Sample& run) const {
        const RunUnit& unit = track_.table.unit;
        const uint32_t each = run.duration / run.count;
        if (each == 0) return;
        const int64_t early = (shownFrom_ - LeadOf(track_, run) - run.shown) / each;
        if (early <= 0) return;
        const auto units = static_cast<uint32_t>(std::min<int64_t>(early, run.count - 1) / unit.samples);
        const uint32_t count = units * unit.samples;
        run.offset += uint64_t{units} * unit.bytes;
        run.size -= units * unit.bytes;
        run.count -= count;
        run.duration -= count * each;
        run.decoded += int64_t{count} * each;
        run.shown = run.decoded;
    }

    void TrimLastRun(Sample& run) const {
        const RunUnit& unit = track_.table.unit;
        const int64_t each = run.duration / run.count;
        if (each == 0 || shownTo_ <= run.shown) return;
        const int64_t needed = (shownTo_ - run.shown + each - 1) / each;
        const int64_t units = (needed + unit.samples - 1) / unit.samples;
        if (units * unit.samples >= run.count) return;
        run.count = static_cast<uint32_t>(units * unit.samples);
        run.size = static_cast<uint32_t>(units * unit.bytes);
        run.duration = static_cast<uint32_t>(run.count * each);
    }

    // Readers that ignore edits then find the texts at the times of the clip.
    void TrimTexts(Sample& first, Sample& last) const {
        const int64_t late = shownFrom_ - first.shown;
        if (late > 0 && late < first.duration) {
            first.decoded += late;
            first.shown += late;
            first.duration -= static_cast<uint32_t>(late);
        }
        if (last.end() > shownTo_ && shownTo_ > last.shown)
            last.duration = static_cast<uint32_t>(shownTo_ - last.shown);
    }

    const SourceTrack& track_;
    const std::vector<Sample>& samples_;
    SourceFile& file_;
    const Budget& budget_;
    // What the edits so far need.
    size_t first_ = SIZE_MAX;
    size_t last_ = 0;
    uint32_t usual_ = UINT32_MAX;                    // the longest that a packet of sound is heard
    std::vector<std::pair<size_t, size_t>> begins_;  // where each is decoded from, and what it shows first
    int64_t shownFrom_ = INT64_MAX;
    int64_t shownTo_ = 0;
    ClipTrack result_;
};

}  // namespace

int64_t MovieTime::In(uint32_t otherUnit) const {
    return std::min(av_rescale(value, otherUnit, unit), kFurthest);
}

MovieTime FrameStart(const SourceTrack& video, MovieTime time, bool atKeyframe, SourceFile& file,
                     const Budget& budget) {
    const std::vector<Sample>& samples = video.table.samples;
    const int64_t start = time.In(video.unit);
    for (const Edit& edit : video.edits) {
        if (start < edit.start || start >= edit.end()) continue;
        // Times of requests are rounded down.
        const int64_t media = edit.media + (start - edit.start) + video.unit / kTicks;
        std::optional<size_t> shown = ShownAt(samples, media);
        if (!shown || media >= video.table.End()) break;
        if (atKeyframe) shown = RandomAccess(video, file, budget).StartFor(*shown);
        return {edit.start + std::max<int64_t>(0, samples[*shown].shown - edit.media), video.unit};
    }
    return time;
}

ClipTrack CutTrack(const SourceTrack& track, MovieTime start, MovieTime end, SourceFile& file,
                   const Budget& budget) {
    return TrackCutter(track, file, budget).Cut(start.In(track.unit), end.In(track.unit));
}

}  // namespace ovnxmedia
