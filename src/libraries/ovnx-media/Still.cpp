#include "libraries/ovnx-media/Still.h"

#include <algorithm>
#include <string_view>

#include "libraries/ovnx-media/Allowance.h"
#include "libraries/ovnx-media/ExrReader.h"
#include "libraries/ovnx-media/JpegReader.h"
#include "libraries/ovnx-media/PngReader.h"

namespace ovnxmedia {
namespace {

using namespace std::string_view_literals;

using ReadStill = Picture (*)(SourceFile& file, Size box, Allowance& allowance, const Budget& budget);

// `read` is null for videos.
struct Format {
    size_t at;
    std::string_view bytes;
    ReadStill read;
};

// A file of boxes begins with the length of the first one and then its type: any that files are seen to have.
constexpr Format kFormats[] = {
    {0, "\x89PNG\r\n\x1A\n"sv, ReadPng},
    {0, "\xFF\xD8\xFF"sv, ReadJpeg},
    {0, "\x76\x2F\x31\x01"sv, ReadExr},
    {0, "\x1A\x45\xDF\xA3"sv, nullptr},
    {4, "ftyp"sv, nullptr},
    {4, "moov"sv, nullptr},
    {4, "mdat"sv, nullptr},
    {4, "wide"sv, nullptr},
    {4, "free"sv, nullptr},
    {4, "skip"sv, nullptr},
};
constexpr size_t kStartSize = 8;

const Format* Recognise(SourceFile& file) {
    char start[kStartSize];
    const std::string_view bytes(start, file.ReadAt(0, start, sizeof(start)));
    if (file.HasFailed()) throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
    const auto fits = [bytes](const Format& format) {
        return bytes.size() >= format.at && bytes.substr(format.at, format.bytes.size()) == format.bytes;
    };
    const Format* const found = std::find_if(std::begin(kFormats), std::end(kFormats), fits);
    return found == std::end(kFormats) ? nullptr : found;
}

}  // namespace

OvnxMediaKind ProbeKind(SourceFile& file) {
    const Format* const format = Recognise(file);
    if (!format) return OVNX_MEDIA_KIND_UNKNOWN;
    return format->read ? OVNX_MEDIA_KIND_STILL : OVNX_MEDIA_KIND_VIDEO;
}

Picture DecodeStill(int fd, Size box, const Budget& budget) {
    SourceFile file(fd);
    const Format* const format = Recognise(file);
    if (!format || !format->read) throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "no still picture");
    Allowance allowance;
    try {
        return format->read(file, box, allowance, budget);
    } catch (const Failure& failure) {
        // What could not be read looks damaged.
        if (failure.status() == OVNX_MEDIA_DAMAGED && file.HasFailed())
            throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
        throw;
    }
}

}  // namespace ovnxmedia
