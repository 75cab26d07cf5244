#include "libraries/ovnx-media/apple/DrawnImage.h"

#include <algorithm>
#include <new>

#include "base/apple/Owned.h"

namespace ovnxmedia {
namespace {

constexpr unsigned kDrawnChannels = 4;  // those that the system draws into

bool HasAlpha(CGImageRef image) {
    const CGImageAlphaInfo alpha = CGImageGetAlphaInfo(image);
    return alpha != kCGImageAlphaNone && alpha != kCGImageAlphaNoneSkipFirst &&
           alpha != kCGImageAlphaNoneSkipLast;
}

void UndoMultiplying(Samples& samples) {
    for (size_t at = 0; at < samples.size(); at += kDrawnChannels) {
        const unsigned alpha = samples[at + 3];
        for (size_t i = at; alpha > 0 && i < at + 3; ++i)
            samples[i] = static_cast<uint8_t>(std::min(255U, (samples[i] * 255U + alpha / 2) / alpha));
    }
}

void DropAlpha(Samples& samples) {
    size_t to = 0;
    for (size_t at = 0; at < samples.size(); at += kDrawnChannels, to += 3)
        std::copy_n(&samples[at], 3, &samples[to]);
    samples.resize(to);
}

Picture Draw(CGImageRef image, Size size, bool hasAlpha) {
    Picture picture{size, kDrawnChannels, {}};
    picture.samples.resize(picture.Stride() * size.height);
    const uint32_t layout = uint32_t{kCGBitmapByteOrder32Big} |
                            uint32_t{hasAlpha ? kCGImageAlphaPremultipliedLast : kCGImageAlphaNoneSkipLast};
    const KXP::Owned colours(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
    const KXP::Owned context(CGBitmapContextCreate(picture.samples.data(), size.width, size.height, 8,
                                                   picture.Stride(), colours.get(), layout));
    if (!context) throw std::bad_alloc();
    CGContextSetInterpolationQuality(context.get(), kCGInterpolationHigh);
    CGContextDrawImage(context.get(), CGRectMake(0, 0, size.width, size.height), image);
    hasAlpha ? UndoMultiplying(picture.samples) : DropAlpha(picture.samples);
    picture.channels = hasAlpha ? 4 : 3;
    return picture;
}

}  // namespace

Picture DrawImage(CGImageRef image, Size size) {
    return Draw(image, size, HasAlpha(image));
}

Picture DrawOpaque(CGImageRef image, Size size) {
    return Draw(image, size, false);
}

}  // namespace ovnxmedia
