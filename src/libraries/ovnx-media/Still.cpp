#include "libraries/ovnx-media/Still.h"

#include <string>
#include <string_view>

#include "libraries/ovnx-media/Allowance.h"
#include "libraries/ovnx-media/ExrReader.h"
#include "libraries/ovnx-media/JpegReader.h"
#include "libraries/ovnx-media/MediaInput.h"
#include "libraries/ovnx-media/PngReader.h"

namespace ovnxmedia {
namespace {

using ReadStill = Picture (*)(SourceFile& file, Size box, Allowance& allowance, const Budget& budget);

struct Format {
    std::string_view magic;
    ReadStill read;
};

constexpr Format kFormats[] = {
    {"\x89PNG\r\n\x1A\n", ReadPng},
    {"\xFF\xD8\xFF", ReadJpeg},
    {"\x76\x2F\x31\x01", ReadExr},
};

std::string StartOf(SourceFile& file) {
    char start[kStartSize];
    const size_t size = file.ReadAt(0, start, sizeof(start));
    if (file.HasFailed()) throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
    return {start, size};
}

// Null for what is no still picture.
ReadStill ReaderFor(std::string_view start) {
    for (const Format& format : kFormats)
        if (start.substr(0, format.magic.size()) == format.magic) return format.read;
    return nullptr;
}

}  // namespace

OvnxMediaKind ProbeKind(SourceFile& file) {
    const std::string start = StartOf(file);
    if (ReaderFor(start)) return OVNX_MEDIA_KIND_STILL;
    return DemuxerOf(start) ? OVNX_MEDIA_KIND_VIDEO : OVNX_MEDIA_KIND_UNKNOWN;
}

Picture DecodeStill(int fd, Size box, const Budget& budget) {
    SourceFile file(fd);
    const ReadStill read = ReaderFor(StartOf(file));
    if (!read) throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "no still picture");
    Allowance allowance;
    try {
        return read(file, box, allowance, budget);
    } catch (const Failure& failure) {
        // What could not be read looks damaged.
        if (failure.status() == OVNX_MEDIA_DAMAGED && file.HasFailed())
            throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
        throw;
    }
}

}  // namespace ovnxmedia
