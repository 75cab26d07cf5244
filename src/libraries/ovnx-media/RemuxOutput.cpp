#include "libraries/ovnx-media/RemuxOutput.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>
#include <string>

#include "libraries/media-bytes/Boxes.h"
#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/MovieBoxes.h"

namespace ovnxmedia {
namespace {

[[noreturn]] void ThrowUnwritable(int error) {
    throw Failure(OVNX_MEDIA_UNWRITABLE, std::strerror(error));
}

}  // namespace

RemuxOutput::RemuxOutput(int fd)
    : fd_(fd),
      io_(MakeIo(true, this, nullptr, WriteBytes, SeekBytes)),
      format_(nullptr, avformat_free_context) {
    AVFormatContext* format = nullptr;
    if (avformat_alloc_output_context2(&format, nullptr, "mp4", nullptr) < 0) throw std::bad_alloc();
    format_.reset(format);
    // Packets are large, and go straight to the file.
    io_->direct = 1;
    format->pb = io_.get();
    format->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
}

AVStream& RemuxOutput::AddTrack(const AVStream& like) {
    AVStream* stream = avformat_new_stream(format_.get(), nullptr);
    if (!stream || avcodec_parameters_copy(stream->codecpar, like.codecpar) < 0) throw std::bad_alloc();
    // A tag of another container's would be refused; the muxer knows its own.
    AVCodecParameters& parameters = *stream->codecpar;
    if (av_codec_get_id(format_->oformat->codec_tag, parameters.codec_tag) != parameters.codec_id)
        parameters.codec_tag = 0;
    stream->time_base = like.time_base;
    stream->disposition = like.disposition;
    stream->sample_aspect_ratio = like.sample_aspect_ratio;
    stream->avg_frame_rate = like.avg_frame_rate;
    bool copied = av_dict_copy(&stream->metadata, like.metadata, 0) >= 0;
    // Rotation, and the like.
    for (int i = 0; copied && i < like.nb_side_data; ++i) {
        const AVPacketSideData& data = like.side_data[i];
        uint8_t* place = av_stream_new_side_data(stream, data.type, data.size);
        copied = place != nullptr;
        if (copied) std::copy_n(data.data, data.size, place);
    }
    if (!copied) throw std::bad_alloc();
    return *stream;
}

void RemuxOutput::Begin(const AVFormatContext& source, uint64_t room) {
    if (room > std::numeric_limits<int>::max())
        throw Failure(OVNX_MEDIA_OVER_LIMIT, "too much describes the clip");
    if (const AVDictionaryEntry* time = av_dict_get(source.metadata, "creation_time", nullptr, 0))
        av_dict_set(&format_->metadata, "creation_time", time->value, 0);
    AVDictionary* options = nullptr;
    av_dict_set_int(&options, "moov_size", static_cast<int64_t>(room), 0);
    av_dict_set_int(&options, "movie_timescale", kMovieTimescale, 0);
    av_dict_set_int(&options, "write_tmcd", 0, 0);  // that would add a track
    const int result = avformat_write_header(format_.get(), &options);
    av_dict_free(&options);
    Expect(result, "beginning the clip");
}

void RemuxOutput::Write(AVPacket& packet) {
    written_ = packet.buf;
    const int result = av_write_frame(format_.get(), &packet);
    written_ = nullptr;
    Expect(result, "writing the clip");
}

void RemuxOutput::Finish(const std::vector<uint64_t>& durations, std::string_view userData) {
    const int result = av_write_trailer(format_.get());
    avio_flush(io_.get());
    if (error_ == 0 && !writer_.Flush()) error_ = errno;
    Expect(result, "ending the clip");
    PutMovie(durations, userData);
}

void RemuxOutput::PutMovie(const std::vector<uint64_t>& durations, std::string_view userData) {
    SourceFile written(fd_);
    const MovieRoom room = ReadMovieRoom(written);
    std::string movie = FinishMovie(room.movie, durations, userData);
    const uint64_t size = room.end - room.start;
    if (movie.size() + 8 > size) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too much describes the clip");
    movie += media::BoxHeader(size - movie.size(), "free");
    const auto* bytes = reinterpret_cast<const uint8_t*>(movie.data());
    if (!writer_.Write(static_cast<int64_t>(room.start), bytes, movie.size(), nullptr))
        ThrowUnwritable(errno);
}

int RemuxOutput::WriteBytes(void* self, uint8_t* bytes, int size) noexcept {
    auto* output = static_cast<RemuxOutput*>(self);
    if (output->error_ == 0 &&
        !output->writer_.Write(output->position_, bytes, static_cast<size_t>(size), output->written_))
        output->error_ = errno;
    if (output->error_ != 0) return AVERROR(output->error_);
    output->position_ += size;
    return size;
}

int64_t RemuxOutput::SeekBytes(void* self, int64_t offset, int whence) noexcept {
    auto* output = static_cast<RemuxOutput*>(self);
    if (whence != SEEK_SET || offset < 0) return AVERROR(EINVAL);
    return output->position_ = offset;
}

void RemuxOutput::Expect(int result, const char* doing) const {
    if (error_ != 0) ThrowUnwritable(error_);
    if (result >= 0) return;
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(result, text, sizeof(text));
    throw Failure(OVNX_MEDIA_DAMAGED, std::string(doing) + ": " + text);
}

}  // namespace ovnxmedia
