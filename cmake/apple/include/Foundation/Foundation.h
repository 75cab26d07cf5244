// The part of Foundation that we use, after its public documentation.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

// The headers of the language, where there are any.
#if __has_include(<objc/NSObject.h>)
#import <objc/NSObject.h>
#else
#if __OBJC_BOOL_IS_BOOL
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
#define nil nullptr

typedef long NSInteger;
typedef unsigned long NSUInteger;

__attribute__((objc_root_class))
@interface NSObject
+ (instancetype)alloc;
- (instancetype)init;
@end
#endif
typedef NSUInteger NSStringEncoding;

@class NSArray<Element>, NSDictionary<Key, Value>, NSError, NSString;

typedef struct {
    unsigned long state;
    id __unsafe_unretained* itemsPtr;
    unsigned long* mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;

enum : NSStringEncoding { NSUTF8StringEncoding = 4 };

@interface NSString : NSObject
+ (instancetype)stringWithUTF8String:(const char*)text;
+ (instancetype)stringWithCString:(const char*)text encoding:(NSStringEncoding)encoding;
+ (instancetype)stringWithFormat:(NSString*)format, ... __attribute__((format(__NSString__, 1, 2)));
@property(class, readonly) NSStringEncoding defaultCStringEncoding;
@property(readonly) NSUInteger length;
- (BOOL)isEqualToString:(NSString*)other;
@property(readonly) const char* UTF8String __attribute__((objc_returns_inner_pointer));
@end

@interface NSNumber : NSObject
+ (NSNumber*)numberWithUnsignedInteger:(NSUInteger)value;
@property(readonly) BOOL boolValue;
@end

@interface NSArray<__covariant Element> : NSObject
@property(readonly) Element firstObject;
@property(readonly) NSUInteger count;
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)length;
@end

@interface NSURL : NSObject
+ (NSURL*)fileURLWithPath:(NSString*)path;
@property(readonly) NSString* path;
- (BOOL)getResourceValue:(out id*)value forKey:(NSString*)key error:(out NSError**)error;
@end
typedef NSString* NSURLResourceKey;
extern "C" NSURLResourceKey const NSURLVolumeIsLocalKey;
extern "C" NSURLResourceKey const NSURLVolumeIsRemovableKey;

@protocol NSCopying
@end
@interface NSDictionary<__covariant Key, __covariant Value> : NSObject
+ (instancetype)dictionaryWithObjects:(const Value __unsafe_unretained[])values
                              forKeys:(const id __unsafe_unretained[])keys
                                count:(NSUInteger)count;
+ (NSDictionary<NSString*, Value>*)dictionaryWithContentsOfURL:(NSURL*)url error:(NSError**)error;
- (Value)objectForKey:(Key)key;
@end

extern "C" NSString* const NSCocoaErrorDomain;
enum : NSInteger { NSFeatureUnsupportedError = 3328 };

@interface NSError : NSObject
@property(readonly) NSString* domain;
@property(readonly) NSInteger code;
@property(readonly) NSString* localizedDescription;
@end

@interface NSFileManager : NSObject
@property(class, readonly) NSFileManager* defaultManager;
- (NSArray<NSString*>*)contentsOfDirectoryAtPath:(NSString*)path error:(NSError**)error;
- (BOOL)fileExistsAtPath:(NSString*)path isDirectory:(BOOL*)isDirectory;
- (NSString*)stringWithFileSystemRepresentation:(const char*)text length:(NSUInteger)length;
- (BOOL)trashItemAtURL:(NSURL*)url resultingItemURL:(NSURL**)result error:(NSError**)error;
@end

@interface NSLocale : NSObject
@property(class, readonly) NSArray<NSString*>* preferredLanguages;
@property(class, readonly) NSLocale* currentLocale;
@property(readonly) NSString* localeIdentifier;
@end

enum NSSearchPathDirectory : NSUInteger {
    NSLibraryDirectory = 5,
    NSCachesDirectory = 13,
    NSApplicationSupportDirectory = 14,
    NSMoviesDirectory = 17,
};
typedef NSUInteger NSSearchPathDomainMask;
enum : NSSearchPathDomainMask { NSUserDomainMask = 1 };

extern "C" NSArray<NSString*>* NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                                   NSSearchPathDomainMask domains,
                                                                   BOOL expand);
extern "C" NSString* NSHomeDirectory();
