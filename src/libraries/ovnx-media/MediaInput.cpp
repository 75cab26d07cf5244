#include "libraries/ovnx-media/MediaInput.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>

#include <sys/stat.h>
#include <unistd.h>

namespace ovnxmedia {
namespace {

// What Probe may read.
constexpr int64_t kProbeBytes = 1 << 20;
constexpr int64_t kProbeMicroseconds = 1000000;

ssize_t ReadAt(int fd, uint8_t* buffer, size_t size, int64_t position) {
    for (;;) {
        const ssize_t got = pread(fd, buffer, size, static_cast<off_t>(position));
        if (got >= 0 || errno != EINTR) return got;
    }
}

// Tables of samples and the like may name other files; they are not looked at.
int RefuseFile(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EPERM);
}

std::string TextOf(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(error, text, sizeof(text));
    return text;
}

}  // namespace

const char* DemuxerOf(const uint8_t* bytes, size_t size) {
    constexpr uint8_t kEbml[] = {0x1A, 0x45, 0xDF, 0xA3};
    if (size >= sizeof(kEbml) && std::memcmp(bytes, kEbml, sizeof(kEbml)) == 0) return "matroska";
    // What files of the family begin with; those older than "ftyp" have any of the others.
    for (const char* type : {"ftyp", "moov", "mdat", "wide", "free", "skip"})
        if (size >= 8 && std::memcmp(bytes + 4, type, 4) == 0) return "mov";
    return nullptr;
}

MediaInput::MediaInput(int fd, const Budget& budget, Limits limits)
    : fd_(fd), budget_(budget), limits_(limits) {
    PrepareFfmpeg();
    struct stat status {};
    std::array<uint8_t, 8> start{};
    const ssize_t got = fstat(fd, &status) == 0 ? ReadAt(fd, start.data(), start.size(), 0) : -1;
    if (got < 0) throw Failure(OVNX_MEDIA_UNREADABLE, std::strerror(errno));
    size_ = status.st_size;
    // The samples of an honest file lie side by side; others could make any number of bytes of a few.
    limits_.bytes = std::min(limits_.bytes, size() + kMaxHeadBytes);
    const char* demuxer = DemuxerOf(start.data(), static_cast<size_t>(got));
    if (!demuxer) throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "no video");
    Open(demuxer);
}

void MediaInput::Open(const char* demuxer) {
    io_ = MakeIo(false, this, ReadBytes, nullptr, SeekBytes);
    AVFormatContext* format = avformat_alloc_context();
    if (!format) throw std::bad_alloc();
    format->pb = io_.get();
    // What the tables tell of packets is what is to be known; parsers would only look for more within them.
    format->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_NOPARSE;
    format->io_open = RefuseFile;
    format->max_streams = kMaxStreams;
    const int result = avformat_open_input(&format, "", av_find_input_format(demuxer), nullptr);
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

// Of a file in fragments the demuxer learns piece by piece, behind the head.
bool MediaInput::HasTooManySamples() const noexcept {
    uint64_t samples = 0;
    for (unsigned i = 0; format_ && i < format_->nb_streams; ++i)
        samples += static_cast<uint64_t>(avformat_index_get_entries_count(format_->streams[i]));
    return samples > SampleTally::kLimit;
}

int MediaInput::ReadSome(uint8_t* buffer, int size) noexcept {
    failure_ = Allowed();
    if (failure_ != OVNX_MEDIA_OK) return AVERROR_EXIT;
    const ssize_t got = ReadAt(fd_, buffer, static_cast<size_t>(size), position_);
    if (got < 0) failure_ = OVNX_MEDIA_UNREADABLE;
    if (got < 0) return AVERROR(EIO);
    if (got == 0) return AVERROR_EOF;
    if (inHead_ && !tally_.Take(static_cast<uint64_t>(position_), buffer, static_cast<size_t>(got))) {
        failure_ = OVNX_MEDIA_OVER_LIMIT;
        return AVERROR_EXIT;
    }
    position_ += got;
    bytesRead_ += static_cast<uint64_t>(got);
    return static_cast<int>(got);
}

int MediaInput::ReadBytes(void* self, uint8_t* buffer, int size) noexcept {
    return static_cast<MediaInput*>(self)->ReadSome(buffer, size);
}

int64_t MediaInput::SeekBytes(void* self, int64_t offset, int whence) noexcept {
    auto* input = static_cast<MediaInput*>(self);
    if (whence == AVSEEK_SIZE) return input->size_;
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

void MediaInput::Probe() {
    format_->probesize = kProbeBytes;
    format_->max_analyze_duration = kProbeMicroseconds;
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
    // What the limits refuse is told as want of memory.
    const auto status = result == AVERROR(ENOMEM) ? OVNX_MEDIA_OVER_LIMIT : OVNX_MEDIA_DAMAGED;
    throw Failure(status, std::string(doing) + ": " + TextOf(result));
}

}  // namespace ovnxmedia
