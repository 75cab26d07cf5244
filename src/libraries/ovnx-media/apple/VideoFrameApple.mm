#include <cmath>
#include <string>

#import <AVFoundation/AVFoundation.h>
#include <sys/stat.h>

#include "base/FileCalls.h"
#include "base/apple/Owned.h"
#include "libraries/ovnx-media/Allowance.h"
#include "libraries/ovnx-media/FileKind.h"
#include "libraries/ovnx-media/FrameChoice.h"
#include "libraries/ovnx-media/VideoFrame.h"
#include "libraries/ovnx-media/apple/DrawnImage.h"
#include "libraries/ovnx-media/apple/ShownKeyframes.h"

namespace ovnxmedia {
namespace {

// Media are opened by path alone, which must still lead to the file.
std::string PathOf(int fd) {
    std::string path = KXP::Platform::PathOf(fd);
    struct stat there {};
    struct stat open {};
    if (stat(path.c_str(), &there) != 0 || fstat(fd, &open) != 0 || there.st_ino != open.st_ino ||
        there.st_dev != open.st_dev)
        throw Failure(OVNX_MEDIA_UNREADABLE, "has been moved");
    return path;
}

// Opens none of the other files that a movie may name.
AVURLAsset* OpenAsset(int fd) {
    NSString* path = [NSString stringWithUTF8String:PathOf(fd).c_str()];
    if (!path) throw Failure(OVNX_MEDIA_UNREADABLE, "its name is not UTF-8");
    NSDictionary* options =
        @{AVURLAssetReferenceRestrictionsKey : @(NSUInteger{AVAssetReferenceRestrictionForbidAll})};
    return [AVURLAsset URLAssetWithURL:[NSURL fileURLWithPath:path] options:options];
}

AVAssetTrack* VideoOf(AVAsset* asset) {
    AVAssetTrack* video = [asset tracksWithMediaType:AVMediaTypeVideo].firstObject;
    if (!video) throw Failure(OVNX_MEDIA_DAMAGED, "there is no video in it");
    const CGSize size = video.naturalSize;
    if (!(size.width * size.height <= OVNX_MEDIA_MAX_PIXELS))
        throw Failure(OVNX_MEDIA_OVER_LIMIT, "the video's pictures are too large");
    return video;
}

// Of upright pictures of exactly the frames that are asked for, not larger than the box.
AVAssetImageGenerator* GeneratorFor(AVAsset* asset, Size box) {
    AVAssetImageGenerator* generator = [AVAssetImageGenerator assetImageGeneratorWithAsset:asset];
    generator.appliesPreferredTrackTransform = YES;
    generator.maximumSize = CGSizeMake(box.width, box.height);
    generator.requestedTimeToleranceBefore = kCMTimeZero;
    generator.requestedTimeToleranceAfter = kCMTimeZero;
    return generator;
}

// Where the tables cannot be read, a tenth of the video, decoded from the keyframe before it.
ShownTimes TimesOf(int fd, AVAssetTrack* video, const Budget& budget) {
    constexpr int32_t kUnit = 600;
    ShownTimes shown;
    try {
        shown = KeyframesFromTenth(fd, FrameChoice::kTries, budget);
    } catch (const Failure& failure) {
        if (failure.status() == OVNX_MEDIA_STOPPED || failure.status() == OVNX_MEDIA_OVER_LIMIT) throw;
    }
    if (!shown.times.empty()) return shown;
    const CMTimeRange range = video.timeRange;
    const double tenth = CMTimeGetSeconds(range.start) + CMTimeGetSeconds(range.duration) / 10;
    return {kUnit, {std::isfinite(tenth) ? std::llround(tenth * kUnit) : 0}};
}

// Null for a frame that cannot be decoded.
KXP::Owned<CGImageRef> FrameAt(AVAssetImageGenerator* generator, int64_t time, uint32_t unit) {
    return KXP::Owned([generator copyCGImageAtTime:CMTimeMake(time, static_cast<int32_t>(unit))
                                        actualTime:nullptr
                                             error:nil]);
}

Picture RgbOf(CGImageRef image, Size box) {
    const Size size{static_cast<uint32_t>(CGImageGetWidth(image)),
                    static_cast<uint32_t>(CGImageGetHeight(image))};
    CheckPixels(size);
    return DrawOpaque(image, FitInside(size, box));
}

}  // namespace

Picture DecodeVideoFrame(int fd, Size box, const Budget& budget) {
    SourceFile file(fd);
    if (!DemuxerOf(StartOf(file))) throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "no video");
    @autoreleasepool {
        AVURLAsset* asset = OpenAsset(fd);
        const ShownTimes shown = TimesOf(fd, VideoOf(asset), budget);
        AVAssetImageGenerator* generator = GeneratorFor(asset, box);
        FrameChoice choice;
        for (auto time = shown.times.begin(); time != shown.times.end() && choice.WantsAnother(); ++time) {
            budget.Check();
            const auto frame = FrameAt(generator, *time, shown.unit);
            if (frame) choice.Offer(RgbOf(frame.get(), box));
        }
        return choice.Take();
    }
}

}  // namespace ovnxmedia
