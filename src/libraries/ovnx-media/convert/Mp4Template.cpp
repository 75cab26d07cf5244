#include "libraries/ovnx-media/convert/Mp4Template.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

#include "libraries/ovnx-media/Failure.h"

extern "C" {
#include <libavutil/mem.h>
}

namespace ovnxmedia {
namespace {

constexpr AVRational kMicroseconds{1, 1000000};

// Descriptions that hold for the copy. Others name the container, or the program that wrote it.
constexpr const char* kKept[] = {"title",     "comment", "artist",      "date",  "creation_time",
                                 "copyright", "game",    "description", "genre", "language"};

void Expect(int result, const char* doing) {
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result >= 0) return;
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(result, text, sizeof text);
    throw Failure(OVNX_MEDIA_DAMAGED, std::string("cannot be made an MP4: ") + doing + ": " + text);
}

void CopyDescriptions(const AVDictionary* from, AVDictionary** to) {
    for (const char* const key : kKept)
        if (const AVDictionaryEntry* const entry = av_dict_get(from, key, nullptr, 0))
            av_dict_set(to, key, entry->value, 0);
}

}  // namespace

Mp4Template::Mp4Template() : io_(MakeIo(true, this, nullptr, WriteBytes, SeekBytes)) {
    AVFormatContext* format = nullptr;
    const int result = avformat_alloc_output_context2(&format, nullptr, "mp4", nullptr);
    format_.reset(format);
    Expect(result, "an MP4 file");
    format_->pb = io_.get();
    // Without the name of the library in the file.
    format_->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
    format_->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
}

AVStream& Mp4Template::AddTrack(const AVStream& source) {
    AVStream* const track = avformat_new_stream(format_.get(), nullptr);
    if (!track) throw std::bad_alloc();
    Expect(avcodec_parameters_copy(track->codecpar, source.codecpar), "a track");
    track->codecpar->codec_tag = 0;
    track->time_base = source.time_base;
    track->avg_frame_rate = source.avg_frame_rate;
    track->sample_aspect_ratio = source.sample_aspect_ratio;
    track->disposition = source.disposition;
    CopyDescriptions(source.metadata, &track->metadata);
    for (int i = 0; i < source.nb_side_data; ++i) {
        const AVPacketSideData& data = source.side_data[i];
        uint8_t* const copy = av_stream_new_side_data(track, data.type, data.size);
        if (!copy) throw std::bad_alloc();
        std::memcpy(copy, data.data, data.size);
    }
    return *track;
}

void Mp4Template::Describe(const AVFormatContext& source, int64_t shift) {
    CopyDescriptions(source.metadata, &format_->metadata);
    if (source.nb_chapters == 0) return;
    format_->chapters = static_cast<AVChapter**>(av_calloc(source.nb_chapters, sizeof(AVChapter*)));
    if (!format_->chapters) throw std::bad_alloc();
    for (unsigned i = 0; i < source.nb_chapters; ++i) {
        const AVChapter& from = *source.chapters[i];
        auto* const chapter = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
        if (!chapter) throw std::bad_alloc();
        format_->chapters[format_->nb_chapters++] = chapter;
        chapter->id = from.id;
        chapter->time_base = kMicroseconds;
        chapter->start =
            std::max<int64_t>(0, av_rescale_q(from.start, from.time_base, kMicroseconds) + shift);
        chapter->end =
            std::max(chapter->start, av_rescale_q(from.end, from.time_base, kMicroseconds) + shift);
        av_dict_copy(&chapter->metadata, from.metadata, 0);
    }
}

void Mp4Template::Start() {
    Expect(avformat_write_header(format_.get(), nullptr), "its head");
}

void Mp4Template::Write(AVPacket& packet) {
    Expect(av_write_frame(format_.get(), &packet), "a packet");
    av_packet_unref(&packet);
}

std::string Mp4Template::Finish() {
    Expect(av_write_trailer(format_.get()), "its tables");
    avio_flush(io_.get());
    Expect(io_->error, "its end");
    return std::move(bytes_);
}

int Mp4Template::WriteBytes(void* self, uint8_t* bytes, int size) noexcept {
    auto* const made = static_cast<Mp4Template*>(self);
    const auto count = static_cast<size_t>(size);
    try {
        if (made->bytes_.size() < made->position_ + count) made->bytes_.resize(made->position_ + count);
    } catch (const std::exception&) {
        return AVERROR(ENOMEM);
    }
    std::memcpy(made->bytes_.data() + made->position_, bytes, count);
    made->position_ += count;
    return size;
}

int64_t Mp4Template::SeekBytes(void* self, int64_t offset, int whence) noexcept {
    auto* const made = static_cast<Mp4Template*>(self);
    if (whence == AVSEEK_SIZE) return static_cast<int64_t>(made->bytes_.size());
    if ((whence & ~AVSEEK_FORCE) != SEEK_SET || offset < 0) return AVERROR(EINVAL);
    made->position_ = static_cast<size_t>(offset);
    return offset;
}

}  // namespace ovnxmedia
