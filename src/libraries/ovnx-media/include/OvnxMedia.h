/*
 * libovnxmedia: pictures of media files and remuxing, and the one library of the product that links codecs.
 *
 * The product runs inside a browser that carries codecs of its own, so this library is opened at run time, in
 * a symbol scope of its own, and speaks C. Its users know it by this header alone and never link it.
 *
 * Inputs are descriptors of regular files, opened for reading and lent for the length of a call; they are
 * read at offsets of the library's own, so that their position is neither used nor kept. What they hold is
 * taken for hostile: pixels, bytes, streams, packets and time are limited before anything is allocated for
 * them. The functions may be called from any thread, at once on different files. None of them logs; a failure
 * is told by its code, and in words by `message`.
 */
#ifndef OVNX_MEDIA_H
#define OVNX_MEDIA_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The limits of one input. */
#define OVNX_MEDIA_MAX_PIXELS 67108864u
#define OVNX_MEDIA_MAX_ALLOCATION 268435456u

enum OvnxMediaStatus {
    OVNX_MEDIA_OK = 0,
    OVNX_MEDIA_UNKNOWN_FORMAT = -1, /* none of the formats that the function takes */
    OVNX_MEDIA_DAMAGED = -2,        /* begins like one of them and does not decode */
    OVNX_MEDIA_OVER_LIMIT = -3,     /* too many pixels, bytes, streams or packets, or too long at it */
    OVNX_MEDIA_STOPPED = -4,        /* the caller's `stop` said so */
    OVNX_MEDIA_UNREADABLE = -5,     /* the descriptor cannot be read */
    OVNX_MEDIA_NO_MEMORY = -6,
    OVNX_MEDIA_EMPTY_RANGE = -7, /* nothing lies between the two times */
    OVNX_MEDIA_NO_VIDEO = -8,    /* none of its tracks is a video */
    OVNX_MEDIA_UNWRITABLE = -10  /* the output cannot be written */
};

enum OvnxMediaKind {
    OVNX_MEDIA_KIND_UNKNOWN = 0,
    OVNX_MEDIA_KIND_STILL = 1, /* PNG, JPEG, OpenEXR */
    OVNX_MEDIA_KIND_VIDEO = 2  /* MP4 and its family, Matroska */
};

/* What a caller wants of a picture, and how it hears of failures. */
struct OvnxMediaRequest {
    /* The box that the picture is to fit in, in pixels, both at least 1. Its aspect is kept, and it is never
     * larger than the source. */
    uint32_t width;
    uint32_t height;
    /* Asked now and then on the calling thread; other than 0 ends the work. May be null. */
    int (*stop)(void* context);
    void* context;
    /* Filled with one line of text on failure, cut to what there is room for. May be null. */
    char* message;
    size_t messageSize;
};

/* A PNG file in memory, owned by the library until OvnxMediaRelease. */
struct OvnxMediaPicture {
    uint8_t* bytes;
    size_t size;
    uint32_t width;
    uint32_t height;
};

/* What the file is by its first bytes, of enum OvnxMediaKind, or a negative status. Decodes nothing. */
__attribute__((visibility("default"))) int32_t OvnxMediaProbe(int fd);

/* Both give a status of enum OvnxMediaStatus and fill `picture` on success alone. The video frame is a
 * keyframe from a tenth of the video's length on, and a later one while the picture is nearly one colour. */
__attribute__((visibility("default"))) int32_t OvnxMediaStillThumbnail(int fd,
                                                                       const struct OvnxMediaRequest* request,
                                                                       struct OvnxMediaPicture* picture);
__attribute__((visibility("default"))) int32_t OvnxMediaVideoFrame(int fd,
                                                                   const struct OvnxMediaRequest* request,
                                                                   struct OvnxMediaPicture* picture);
__attribute__((visibility("default"))) void OvnxMediaRelease(struct OvnxMediaPicture* picture);

enum OvnxMediaRemuxFlags {
    OVNX_MEDIA_REMUX_AT_KEYFRAME =
        1 /* the clip starts at the keyframe instead, with nothing before it hidden */
};

/* A part of a video, by times in units of 100 ns. */
struct OvnxMediaRemuxRequest {
    uint64_t start;
    uint64_t end; /* what lies behind the end of the video is cut off */
    uint32_t flags;
    /* As in OvnxMediaRequest. */
    char* message;
    size_t messageSize;
};

/* Copies that part of an MP4 file, without coding anything anew, to `output`: an empty regular file, opened
 * for reading and writing and lent as the input is. Frames are copied from the last keyframe at or before the
 * start on, and players are told to show the part alone. All video and audio tracks come along, with their
 * languages, dispositions, rotation and colours, as does the content of moov/udta byte for byte; the "moov"
 * stands in front. Neither made durable nor removed after a failure. Gives a status of enum OvnxMediaStatus.
 */
__attribute__((visibility("default"))) int32_t OvnxMediaRemux(int input, int output,
                                                              const struct OvnxMediaRemuxRequest* request);

#ifdef __cplusplus
}
#endif

#endif
