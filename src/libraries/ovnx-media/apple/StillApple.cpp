#include <algorithm>

#include <ImageIO/ImageIO.h>

#include "base/apple/Owned.h"
#include "libraries/ovnx-media/Allowance.h"
#include "libraries/ovnx-media/FileKind.h"
#include "libraries/ovnx-media/Still.h"
#include "libraries/ovnx-media/apple/DrawnImage.h"

namespace ovnxmedia {
namespace {

// The orientations from this one on swap the sides of a picture as it is stored.
constexpr int kFirstLyingOrientation = 5;

struct Input {
    SourceFile file;
    const Budget& budget;
};

// The decoder has no other way to be ended.
size_t ReadBytes(void* input, void* buffer, off_t position, size_t size) {
    auto& [file, budget] = *static_cast<Input*>(input);
    if (position < 0 || budget.IsStopped() || budget.IsOver()) return 0;
    return file.ReadAt(static_cast<uint64_t>(position), static_cast<char*>(buffer), size);
}

CFStringRef TypeOf(StillFormat format) {
    switch (format) {
        case StillFormat::Png:
            return CFSTR("public.png");
        case StillFormat::Jpeg:
            return CFSTR("public.jpeg");
        case StillFormat::Exr:
            return CFSTR("com.ilm.openexr-image");
        case StillFormat::None:
            break;
    }
    throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "no still picture");
}

// 0 where there is none.
int NumberOf(CFDictionaryRef properties, CFStringRef key) {
    const auto number = static_cast<CFNumberRef>(CFDictionaryGetValue(properties, key));
    int value = 0;
    return number && CFNumberGetValue(number, kCFNumberIntType, &value) ? value : 0;
}

// Throws Failure for a picture that has too many pixels to be decoded.
Size UprightSize(CGImageSourceRef source) {
    const KXP::Owned properties(CGImageSourceCopyPropertiesAtIndex(source, 0, nullptr));
    if (!properties) throw Failure(OVNX_MEDIA_DAMAGED, "no picture");
    const int width = NumberOf(properties.get(), kCGImagePropertyPixelWidth);
    const int height = NumberOf(properties.get(), kCGImagePropertyPixelHeight);
    Size size{static_cast<uint32_t>(std::max(width, 0)), static_cast<uint32_t>(std::max(height, 0))};
    CheckPixels(size);
    if (NumberOf(properties.get(), kCGImagePropertyOrientation) >= kFirstLyingOrientation)
        std::swap(size.width, size.height);
    return size;
}

// Decoded at about the size that is wanted, upright. Not the thumbnail that the file may hold, which may show
// anything.
KXP::Owned<CGImageRef> DecodeAt(CGImageSourceRef source, Size size) {
    const auto side = static_cast<int>(std::max(size.width, size.height));
    const KXP::Owned longest(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &side));
    const void* keys[] = {kCGImageSourceCreateThumbnailFromImageAlways,
                          kCGImageSourceCreateThumbnailWithTransform, kCGImageSourceThumbnailMaxPixelSize};
    const void* values[] = {kCFBooleanTrue, kCFBooleanTrue, longest.get()};
    const KXP::Owned options(CFDictionaryCreate(kCFAllocatorDefault, keys, values, 3,
                                                &kCFTypeDictionaryKeyCallBacks,
                                                &kCFTypeDictionaryValueCallBacks));
    return KXP::Owned(CGImageSourceCreateThumbnailAtIndex(source, 0, options.get()));
}

Picture Decode(Input& input, CFStringRef type, Size box) {
    const CGDataProviderDirectCallbacks callbacks = {0, nullptr, nullptr, ReadBytes, nullptr};
    const KXP::Owned bytes(
        CGDataProviderCreateDirect(&input, static_cast<off_t>(input.file.size()), &callbacks));
    const KXP::Owned source(bytes ? CGImageSourceCreateWithDataProvider(bytes.get(), nullptr) : nullptr);
    const CFStringRef found = source ? CGImageSourceGetType(source.get()) : nullptr;
    // The system knows more formats, whose limits nobody has looked at.
    if (!found || !CFEqual(found, type)) throw Failure(OVNX_MEDIA_DAMAGED, "not what it begins like");
    const Size size = FitInside(UprightSize(source.get()), box);
    const auto image = DecodeAt(source.get(), size);
    if (!image) throw Failure(OVNX_MEDIA_DAMAGED, "cannot be decoded");
    return DrawImage(image.get(), size);
}

}  // namespace

Picture DecodeStill(int fd, Size box, const Budget& budget) {
    Input input{SourceFile(fd), budget};
    const CFStringRef type = TypeOf(StillFormatOf(StartOf(input.file)));
    try {
        Picture picture = Decode(input, type, box);
        budget.Check();
        return picture;
    } catch (const Failure& failure) {
        // What was stopped, or could not be read, looks damaged.
        budget.Check();
        if (failure.status() == OVNX_MEDIA_DAMAGED && input.file.HasFailed())
            throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
        throw;
    }
}

}  // namespace ovnxmedia
