#include "libraries/ovnx-media/convert/TrackTables.h"

#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {
namespace {

constexpr size_t kNumber = 4;
constexpr size_t kPlace = 8;
constexpr size_t kChunk = 3 * kNumber;

uint32_t Checked(int64_t number, int64_t most) {
    if (number < 0 || number > most) throw Failure(OVNX_MEDIA_OVER_LIMIT, "one of its packets is too long");
    return static_cast<uint32_t>(number);
}

}  // namespace

void TrackTables::Add(const Sample& sample) {
    if (samples_ == 0) {
        firstDecoded_ = sample.decoded;
        firstShown_ = sample.shown;
        shownEnd_ = sample.shown;
    } else {
        durations_.Add(1, Checked(sample.decoded - lastDecoded_, UINT32_MAX));
    }
    const uint32_t shift = Checked(sample.shown - sample.decoded, INT32_MAX);
    shifts_.Add(1, shift);
    isShifted_ = isShifted_ || shift != 0;
    ++samples_;
    if (sample.isSync) AppendNumber(sync_, kNumber, samples_);
    AppendNumber(sizes_, kNumber, sample.size);
    bytes_ += sample.size;
    lastDecoded_ = sample.decoded;
    lastDuration_ = sample.duration;
    shownEnd_ = std::max(shownEnd_, sample.shown + sample.duration);
}

void TrackTables::Extend(uint64_t size, int64_t end) {
    const size_t last = sizes_.size() - kNumber;
    PutNumber(sizes_, last, kNumber, media::ByteView(sizes_).U32(last) + size);
    bytes_ += size;
    lastDuration_ = end - lastDecoded_;
    shownEnd_ = std::max(shownEnd_, end);
}

void TrackTables::AddChunk(uint64_t place, uint32_t samples) {
    AppendNumber(places_, kPlace, place);
    ++chunkCount_;
    if (samples == chunkSamples_) return;
    chunkSamples_ = samples;
    AppendNumber(chunks_, kNumber, chunkCount_);
    AppendNumber(chunks_, kNumber, samples);
    AppendNumber(chunks_, kNumber, 1);
}

void TrackTables::Finish() {
    durations_.Add(1, Checked(lastDuration_, UINT32_MAX));
    durations_.Finish();
    shifts_.Finish();
}

void TrackTables::Write(const std::function<void(std::string_view)>& write) const {
    const auto table = [&](std::string_view type, std::string_view rows, size_t row, bool hasUniformSize) {
        const std::string head(hasUniformSize ? 2 * kNumber : kNumber, '\0');
        std::string start;
        AppendNumber(start, kNumber, 2 * kNumber + head.size() + kNumber + rows.size());
        start.append(type).append(head);
        AppendNumber(start, kNumber, rows.size() / row);
        write(start);
        write(rows);
    };
    table("stts", durations_.rows(), RunRows::kRow, false);
    if (isShifted_) table("ctts", shifts_.rows(), RunRows::kRow, false);
    // Where nothing says what can be decoded by itself, readers have to try.
    if (!sync_.empty() && sync_.size() < sizes_.size()) table("stss", sync_, kNumber, false);
    table("stsc", chunks_, kChunk, false);
    table("stsz", sizes_, kNumber, true);
    table("co64", places_, kPlace, false);
}

uint64_t TrackTables::Size() const {
    uint64_t size = 0;
    Write([&](std::string_view part) { size += part.size(); });
    return size;
}

}  // namespace ovnxmedia
