// The part of ImageIO that we use, after its public documentation.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

typedef struct CGImageSource* CGImageSourceRef;
typedef struct CGImageDestination* CGImageDestinationRef;

extern "C" {
extern const CFStringRef kCGImagePropertyOrientation;
extern const CFStringRef kCGImagePropertyPixelHeight;
extern const CFStringRef kCGImagePropertyPixelWidth;
extern const CFStringRef kCGImageSourceCreateThumbnailFromImageAlways;
extern const CFStringRef kCGImageSourceCreateThumbnailWithTransform;
extern const CFStringRef kCGImageSourceThumbnailMaxPixelSize;

CGImageSourceRef CGImageSourceCreateWithDataProvider(CGDataProviderRef provider, CFDictionaryRef options);
CFStringRef CGImageSourceGetType(CGImageSourceRef source);
CFDictionaryRef CGImageSourceCopyPropertiesAtIndex(CGImageSourceRef source, size_t index,
                                                   CFDictionaryRef options);
CGImageRef CGImageSourceCreateThumbnailAtIndex(CGImageSourceRef source, size_t index,
                                               CFDictionaryRef options);
CGImageDestinationRef CGImageDestinationCreateWithData(CFMutableDataRef data, CFStringRef type, size_t count,
                                                       CFDictionaryRef options);
void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image,
                                CFDictionaryRef properties);
bool CGImageDestinationFinalize(CGImageDestinationRef destination);
}
