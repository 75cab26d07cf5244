#include "libraries/ovnx-media/convert/Mp4Output.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "base/ReadWrite.h"
#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/convert/Mp4Movie.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"
#include "libraries/ovnx-media/cut/SampleTable.h"

namespace ovnxmedia {
namespace {

constexpr size_t kChunkBytes = size_t{256} << 10;
constexpr AVRational kChunkTime{1, 2};
// A frame of that size ends its chunk, so that it is written without a copy.
constexpr size_t kOwnEnd = size_t{64} << 10;
constexpr size_t kPage = size_t{4} << 10;
constexpr size_t kPiece = 16 * kPage;

// The file's type, an empty box, and the header of the media with a size of 64 bits.
constexpr size_t kStart = 128;
constexpr size_t kMediaHeader = 16;
constexpr size_t kBoxHeader = 8;

// The first frame describes a video. Decoders of Opus need the sound of 80 ms before a place, and the packets
// of as long a time say how many these are.
constexpr uint32_t kDescribingFrames = 1;
constexpr uint32_t kDescribingSounds = 40;

// A sample of E-AC3 has six blocks of 256, and some packets have fewer. Times may be rounded.
constexpr int64_t kEac3Sample = 6 * 256 - 128;

bool IsVideo(const AVStream& stream) {
    return NumberOf(stream.codecpar->codec_type) == AVMEDIA_TYPE_VIDEO;
}

bool GoesOn(const AVStream& stream, const TrackTables& tables, int64_t time) {
    return NumberOf(stream.codecpar->codec_id) == AV_CODEC_ID_EAC3 && tables.samples() > 0 &&
           av_rescale(time - tables.lastDecoded(),
                      stream.codecpar->sample_rate * int64_t{stream.time_base.num},
                      stream.time_base.den) < kEac3Sample;
}

// The bytes of the first packets in so long a time that the muxer, which knows no others, writes the rate of
// all as the rate of the track.
int64_t LastDuration(const TrackTables& tables, uint64_t bytes, const AVPacket& last) {
    const int64_t time = av_rescale(tables.Length(), static_cast<int64_t>(bytes),
                                    static_cast<int64_t>(std::max<uint64_t>(tables.bytes(), 1)));
    return std::max<int64_t>(1, time - (last.dts - tables.firstDecoded()));
}

}  // namespace

Mp4Output::Mp4Output(int fd) : fd_(fd), end_(kStart, '\0') {}

AVStream& Mp4Output::AddTrack(const AVStream& source) {
    AVStream& stream = template_.AddTrack(source);
    tracks_.emplace_back().stream = &stream;
    return stream;
}

void Mp4Output::DescribeBy(Track& track, const AVPacket& packet, size_t size) {
    if (track.described == (IsVideo(*track.stream) ? kDescribingFrames : kDescribingSounds)) return;
    if (track.held) template_.Write(*track.held);
    track.held.reset(av_packet_clone(&packet));
    if (!track.held) throw std::bad_alloc();
    ++track.described;
    track.describedBytes += size;
}

void Mp4Output::Write(const AVPacket& packet, std::string_view plain) {
    Track& track = tracks_[static_cast<size_t>(packet.stream_index)];
    DescribeBy(track, packet, plain.size());
    if (GoesOn(*track.stream, track.tables, packet.dts)) {
        track.tables.Extend(plain.size(), packet.dts + packet.duration);
        track.chunk += plain;
        return;
    }
    const int64_t most = av_rescale_q(1, kChunkTime, track.stream->time_base);
    if (track.chunk.size() >= kChunkBytes || packet.dts - track.chunkStart >= most) FlushChunk(track);
    if (track.chunkSamples++ == 0) track.chunkStart = packet.dts;
    const bool isSync = IsVideo(*track.stream) && (packet.flags & AV_PKT_FLAG_KEY) != 0;
    track.tables.Add({plain.size(), packet.dts, packet.pts, packet.duration, isSync});
    if (plain.size() >= kOwnEnd && IsVideo(*track.stream)) return FlushChunk(track, plain);
    track.chunk += plain;
}

void Mp4Output::FlushChunk(Track& track, std::string_view last) {
    if (track.chunkSamples == 0) return;
    track.tables.AddChunk(written_ + end_.size(), std::exchange(track.chunkSamples, 0));
    Append(track.chunk);
    track.chunk.clear();
    Append(last);
}

void Mp4Output::WriteAt(uint64_t position, std::string_view bytes) const {
    if (!KXP::WriteFullyAt(fd_, bytes.data(), bytes.size(), position))
        throw Failure(OVNX_MEDIA_UNWRITABLE, std::strerror(errno));
}

// In pieces that fill pages of the system's memory, most of them without a copy.
void Mp4Output::Append(std::string_view bytes) {
    if (end_.size() + bytes.size() < kPiece) {
        end_ += bytes;
        return;
    }
    // A piece is a number of pages, so that what fills the last one of these is there.
    const size_t part = (kPage - end_.size() % kPage) % kPage;
    end_ += bytes.substr(0, part);
    bytes.remove_prefix(part);
    FlushEnd();
    const size_t whole = bytes.size() / kPage * kPage;
    WriteAt(written_, bytes.substr(0, whole));
    written_ += whole;
    end_ = bytes.substr(whole);
}

void Mp4Output::FlushEnd() {
    WriteAt(written_, end_);
    written_ += end_.size();
    end_.clear();
}

std::string Mp4Output::FinishTemplate() {
    for (Track& track : tracks_) {
        track.held->duration = LastDuration(track.tables, track.describedBytes, *track.held);
        template_.Write(*track.held);
        track.held.reset();
    }
    return template_.Finish();
}

void Mp4Output::WriteChapters(std::string_view file, std::string_view movie, const Budget& budget) {
    size_t number = 0;
    const size_t recorded = tracks_.size();
    for (const BoxView& box : BoxesOf(movie)) {
        if (box.type != "trak" || number++ < recorded) continue;
        Track& track = tracks_.emplace_back();
        SampleWalk walk(ContentAt(box.content, {"mdia", "minf", "stbl"}), false, budget);
        for (Sample sample; walk.Next(sample);) {
            if (sample.offset > file.size() || sample.size > file.size() - sample.offset) ThrowDamaged();
            track.tables.Add({sample.size, sample.decoded, sample.shown, sample.duration, false});
            track.chunk += file.substr(static_cast<size_t>(sample.offset), sample.size);
            ++track.chunkSamples;
        }
        FlushChunk(track);
    }
}

void Mp4Output::Finish(const Budget& budget) {
    for (Track& track : tracks_)
        FlushChunk(track);
    const std::string file = FinishTemplate();
    const std::vector<BoxView> boxes = BoxesOf(file);
    const auto movie =
        std::find_if(boxes.begin(), boxes.end(), [](const BoxView& box) { return box.type == "moov"; });
    if (movie == boxes.end() || boxes.front().type != "ftyp") ThrowDamaged();
    const size_t recorded = tracks_.size();
    WriteChapters(file, movie->content, budget);

    std::string start(boxes.front().whole);
    if (start.size() > kStart - kMediaHeader - kBoxHeader) ThrowDamaged();
    AppendBox(start, "free", std::string(kStart - kMediaHeader - kBoxHeader - start.size(), '\0'));
    AppendNumber(start, 4, 1);
    start += "mdat";
    AppendNumber(start, 8, written_ + end_.size() - (kStart - kMediaHeader));

    std::vector<const TrackTables*> tables;
    for (Track& track : tracks_) {
        track.tables.Finish();
        tables.push_back(&track.tables);
    }
    WriteMovieOf(movie->content, tables, recorded, [this](std::string_view part) { Append(part); });
    FlushEnd();
    WriteAt(0, start);
}

}  // namespace ovnxmedia
