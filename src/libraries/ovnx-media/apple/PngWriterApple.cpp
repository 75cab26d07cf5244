#include <cstring>
#include <new>

#include <ImageIO/ImageIO.h>

#include "base/apple/Owned.h"
#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/PngWriter.h"

namespace ovnxmedia {
namespace {

// Uses the picture's samples.
KXP::Owned<CGImageRef> ImageOf(const Picture& picture) {
    const KXP::Owned colours(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
    const KXP::Owned samples(
        CGDataProviderCreateWithData(nullptr, picture.samples.data(), picture.samples.size(), nullptr));
    const CGBitmapInfo layout{picture.channels == 4 ? kCGImageAlphaLast : kCGImageAlphaNone};
    return KXP::Owned(CGImageCreate(picture.size.width, picture.size.height, 8, 8 * picture.channels,
                                    picture.Stride(), colours.get(), layout, samples.get(), nullptr, false,
                                    kCGRenderingIntentDefault));
}

}  // namespace

FileBytes WritePng(const Picture& picture, uint64_t limit) {
    const auto image = ImageOf(picture);
    const KXP::Owned bytes(CFDataCreateMutable(kCFAllocatorDefault, 0));
    if (!image || !bytes) throw std::bad_alloc();
    const KXP::Owned file(CGImageDestinationCreateWithData(bytes.get(), CFSTR("public.png"), 1, nullptr));
    if (!file) throw std::bad_alloc();
    CGImageDestinationAddImage(file.get(), image.get(), nullptr);
    if (!CGImageDestinationFinalize(file.get())) throw std::bad_alloc();
    FileBytes png;
    png.size = static_cast<size_t>(CFDataGetLength(bytes.get()));
    if (png.size > limit) throw Failure(OVNX_MEDIA_OVER_LIMIT, "the thumbnail needs too much memory");
    png.Reserve(png.size);
    std::memcpy(png.bytes.get(), CFDataGetBytePtr(bytes.get()), png.size);
    return png;
}

}  // namespace ovnxmedia
