// The part of AVFoundation that we use, after its public documentation.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <CoreMedia/CoreMedia.h>
#include <Foundation/Foundation.h>

typedef NSString* AVMediaType;
extern "C" AVMediaType const AVMediaTypeVideo;
extern "C" NSString* const AVURLAssetReferenceRestrictionsKey;
enum AVAssetReferenceRestrictions : NSUInteger { AVAssetReferenceRestrictionForbidAll = 0xFFFF };

@interface AVAssetTrack : NSObject
@property(readonly) CGSize naturalSize;
@property(readonly) CMTimeRange timeRange;
@end

@interface AVAsset : NSObject
- (NSArray<AVAssetTrack*>*)tracksWithMediaType:(AVMediaType)type;
@end

@interface AVURLAsset : AVAsset
+ (instancetype)URLAssetWithURL:(NSURL*)url options:(NSDictionary<NSString*, id>*)options;
@end

@interface AVAssetImageGenerator : NSObject
+ (instancetype)assetImageGeneratorWithAsset:(AVAsset*)asset;
@property BOOL appliesPreferredTrackTransform;
@property CGSize maximumSize;
@property CMTime requestedTimeToleranceBefore;
@property CMTime requestedTimeToleranceAfter;
- (CGImageRef)copyCGImageAtTime:(CMTime)time actualTime:(CMTime*)actual error:(NSError**)error;
@end
