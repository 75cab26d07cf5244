#include "libraries/ovnx-media/Still.h"

#include "libraries/ovnx-media/Allowance.h"
#include "libraries/ovnx-media/ExrReader.h"
#include "libraries/ovnx-media/FileKind.h"
#include "libraries/ovnx-media/JpegReader.h"
#include "libraries/ovnx-media/PngReader.h"

namespace ovnxmedia {
namespace {

using ReadStill = Picture (*)(SourceFile& file, Size box, Allowance& allowance, const Budget& budget);

// Null for what is no still picture.
ReadStill ReaderOf(StillFormat format) {
    switch (format) {
        case StillFormat::Png:
            return ReadPng;
        case StillFormat::Jpeg:
            return ReadJpeg;
        case StillFormat::Exr:
            return ReadExr;
        case StillFormat::None:
            break;
    }
    return nullptr;
}

}  // namespace

Picture DecodeStill(int fd, Size box, const Budget& budget) {
    SourceFile file(fd);
    const ReadStill read = ReaderOf(StillFormatOf(StartOf(file)));
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
