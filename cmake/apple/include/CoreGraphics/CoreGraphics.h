// The part of CoreGraphics that we use, after its public documentation.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <sys/types.h>

typedef double CGFloat;
struct CGPoint {
    CGFloat x, y;
};
struct CGSize {
    CGFloat width, height;
};
struct CGRect {
    CGPoint origin;
    CGSize size;
};
inline CGSize CGSizeMake(CGFloat width, CGFloat height) {
    return {width, height};
}
inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    return {{x, y}, {width, height}};
}

typedef struct CGColorSpace* CGColorSpaceRef;
typedef struct CGContext* CGContextRef;
typedef struct CGDataProvider* CGDataProviderRef;
typedef struct CGImage* CGImageRef;

enum CGImageAlphaInfo : uint32_t {
    kCGImageAlphaNone = 0,
    kCGImageAlphaPremultipliedLast = 1,
    kCGImageAlphaLast = 3,
    kCGImageAlphaNoneSkipLast = 5,
    kCGImageAlphaNoneSkipFirst = 6,
};
typedef uint32_t CGBitmapInfo;
enum : CGBitmapInfo { kCGBitmapByteOrder32Big = 4 << 12 };
enum CGColorRenderingIntent : int32_t { kCGRenderingIntentDefault = 0 };
enum CGInterpolationQuality : int32_t { kCGInterpolationHigh = 3 };

struct CGDataProviderDirectCallbacks {
    unsigned int version;
    const void* (*getBytePointer)(void* info);
    void (*releaseBytePointer)(void* info, const void* bytes);
    size_t (*getBytesAtPosition)(void* info, void* buffer, off_t position, size_t count);
    void (*releaseInfo)(void* info);
};
typedef void (*CGDataProviderReleaseDataCallback)(void* info, const void* data, size_t size);

extern "C" {
extern const CFStringRef kCGColorSpaceSRGB;

CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef name);
CGContextRef CGBitmapContextCreate(void* data, size_t width, size_t height, size_t bits, size_t stride,
                                   CGColorSpaceRef space, uint32_t info);
void CGContextSetInterpolationQuality(CGContextRef context, CGInterpolationQuality quality);
void CGContextDrawImage(CGContextRef context, CGRect rect, CGImageRef image);
CGDataProviderRef CGDataProviderCreateDirect(void* info, off_t size,
                                             const CGDataProviderDirectCallbacks* callbacks);
CGDataProviderRef CGDataProviderCreateWithData(void* info, const void* data, size_t size,
                                               CGDataProviderReleaseDataCallback release);
CGImageRef CGImageCreate(size_t width, size_t height, size_t bitsOfSample, size_t bitsOfPixel, size_t stride,
                         CGColorSpaceRef space, CGBitmapInfo info, CGDataProviderRef provider,
                         const CGFloat* decode, bool interpolates, CGColorRenderingIntent intent);
CGImageAlphaInfo CGImageGetAlphaInfo(CGImageRef image);
size_t CGImageGetWidth(CGImageRef image);
size_t CGImageGetHeight(CGImageRef image);
}
