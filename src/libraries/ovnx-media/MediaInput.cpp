#include "libraries/ovnx-media/MediaInput.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace ovnxmedia {
namespace {

// Tables of samples and the like may name other files, which are never opened.
int RefuseFile(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EPERM);
}

std::string TextOf(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(error, text, sizeof(text));
    return text;
}

}  // namespace

MediaInput::MediaInput(int fd, const Budget& budget, Limits limits, Trust trust,
                       const char* (*demuxerOf)(std::string_view))
    : file_(fd), budget_(budget), trust_(trust), limits_(limits) {
    PrepareFfmpeg();
    char start[kLongStartSize];
    const size_t got = file_.ReadAt(0, start, sizeof(start));
    if (file_.HasFailed()) throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
    // The samples of an honest file lie side by side; others could make any number of bytes of a few.
    limits_.bytes = std::min(limits_.bytes, file_.size() + kMaxHeadBytes);
    const char* demuxer = demuxerOf({start, got});
    if (!demuxer) throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "no video");
    Open(demuxer);
}

void MediaInput::Open(const char* demuxer) {
    io_ = MakeIo(false, this, ReadBytes, nullptr, SeekBytes);
    AVFormatContext* format = avformat_alloc_context();
    if (!format) throw std::bad_alloc();
    format->pb = io_.get();
    // The tables say all that is needed about packets; parsers would only look for more in their data.
    format->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_NOPARSE;
    format->io_open = RefuseFile;
    format->max_streams = kMaxStreams;
    AVDictionary* options = nullptr;
    if (trust_ == Trust::OwnTables)
        av_dict_parse_string(&options, "ignore_editlist=1:ignore_chapters=1", "=", ":", 0);
    const int result = avformat_open_input(&format, "", av_find_input_format(demuxer), &options);
    av_dict_free(&options);
    format_.reset(format);  // null after a failure
    Expect(result, "opening");
    inHead_ = false;
}

OvnxMediaStatus MediaInput::Allowed() const noexcept {
    if (failure_ != OVNX_MEDIA_OK) return failure_;
    if (budget_.IsStopped()) return OVNX_MEDIA_STOPPED;
    const uint64_t most = inHead_ ? std::min(limits_.bytes, kMaxHeadBytes) : limits_.bytes;
    if (budget_.IsOver() || bytesRead_ > most || HasTooManySamples()) return OVNX_MEDIA_OVER_LIMIT;
    return OVNX_MEDIA_OK;
}

// The demuxer learns of a file in fragments piece by piece, after the head.
bool MediaInput::HasTooManySamples() const noexcept {
    uint64_t samples = 0;
    for (unsigned i = 0; format_ && i < format_->nb_streams; ++i)
        samples += static_cast<uint64_t>(avformat_index_get_entries_count(format_->streams[i]));
    return samples > SampleTally::kLimit;
}

// By the bytes: asking the system where a hole ends would move the descriptor's position.
bool MediaInput::IsInHole(const uint8_t* bytes, size_t size) noexcept {
    const bool isZero = bytes[0] == 0 && std::memcmp(bytes, bytes + 1, size - 1) == 0;
    zeros_ = isZero ? zeros_ + size : 0;
    return zeros_ > kMaxZeroBytes;
}

int MediaInput::ReadSome(uint8_t* buffer, int size) noexcept {
    failure_ = Allowed();
    if (failure_ != OVNX_MEDIA_OK) return AVERROR_EXIT;
    const size_t got = file_.ReadAt(static_cast<uint64_t>(position_), reinterpret_cast<char*>(buffer),
                                    static_cast<size_t>(size));
    if (file_.HasFailed()) failure_ = OVNX_MEDIA_UNREADABLE;
    if (file_.HasFailed()) return AVERROR(EIO);
    if (got == 0 || IsInHole(buffer, got)) return AVERROR_EOF;
    if (inHead_ && trust_ == Trust::Nothing && !tally_.Take(static_cast<uint64_t>(position_), buffer, got)) {
        failure_ = OVNX_MEDIA_OVER_LIMIT;
        return AVERROR_EXIT;
    }
    position_ += static_cast<int64_t>(got);
    bytesRead_ += got;
    return static_cast<int>(got);
}

int MediaInput::ReadBytes(void* self, uint8_t* buffer, int size) noexcept {
    return static_cast<MediaInput*>(self)->ReadSome(buffer, size);
}

int64_t MediaInput::SeekBytes(void* self, int64_t offset, int whence) noexcept {
    auto* input = static_cast<MediaInput*>(self);
    if (whence == AVSEEK_SIZE) return static_cast<int64_t>(input->file_.size());
    if ((whence & ~AVSEEK_FORCE) != SEEK_SET || offset < 0) return AVERROR(EINVAL);
    return input->position_ = offset;
}

AVStream* MediaInput::Video() {
    for (unsigned i = 0; i < format_->nb_streams; ++i) {
        AVStream* stream = format_->streams[i];
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
            !(stream->disposition & AV_DISPOSITION_ATTACHED_PIC))
            return stream;
    }
    return nullptr;
}

void MediaInput::Probe(Probed most) {
    format_->probesize = most.bytes;
    format_->max_analyze_duration = most.microseconds;
    format_->flags &= ~AVFMT_FLAG_NOPARSE;
    Expect(avformat_find_stream_info(format_.get(), nullptr), "looking at streams");
}

bool MediaInput::Read(AVPacket& packet) {
    av_packet_unref(&packet);
    if (++packetsRead_ > limits_.packets) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many packets");
    const int result = av_read_frame(format_.get(), &packet);
    if (result == AVERROR_EOF && failure_ == OVNX_MEDIA_OK) return false;
    Expect(result, "reading");
    return true;
}

bool MediaInput::SeekBack(const AVStream& stream, int64_t time) {
    const int result = av_seek_frame(format_.get(), stream.index, time, AVSEEK_FLAG_BACKWARD);
    if (failure_ != OVNX_MEDIA_OK) Expect(result, "seeking");
    return result >= 0;
}

void MediaInput::Expect(int result, const char* doing) const {
    if (failure_ != OVNX_MEDIA_OK) throw Failure(failure_, std::string(doing) + " was ended");
    if (result >= 0) return;
    // FFmpeg reports what the limits refuse as lack of memory.
    const auto status = result == AVERROR(ENOMEM) ? OVNX_MEDIA_OVER_LIMIT : OVNX_MEDIA_DAMAGED;
    throw Failure(status, std::string(doing) + ": " + TextOf(result));
}

}  // namespace ovnxmedia
