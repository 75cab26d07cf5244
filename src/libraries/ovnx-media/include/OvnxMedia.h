/*
 * libovnxmedia: pictures of media files and remuxing, and the one library of the product that links codecs.
 *
 * The product runs inside a browser that carries codecs of its own, so this library is opened at run time, in
 * a symbol scope of its own, and has a C interface. Its users include this header and never link it.
 *
 * Inputs are descriptors of regular files, open for reading, which the library uses only during a call. It
 * reads at offsets of its own, so that their position is neither used nor moved. Their content is considered
 * hostile: pixels, bytes, streams, packets and time are limited before anything is allocated for them. The
 * functions may be called from any thread, concurrently on different files. None of them logs; a failure is
 * reported by its code, and in words by `message`.
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
    OVNX_MEDIA_UNWRITABLE = -10, /* the output cannot be written */
    OVNX_MEDIA_UNFAITHFUL = -11  /* the output was written and is not what it should be */
};

enum OvnxMediaKind {
    OVNX_MEDIA_KIND_UNKNOWN = 0,
    OVNX_MEDIA_KIND_STILL = 1, /* PNG, JPEG, OpenEXR */
    OVNX_MEDIA_KIND_VIDEO = 2  /* MP4 and its family, Matroska */
};

/* What a caller wants of a picture, and where failures are described. */
struct OvnxMediaRequest {
    /* The box that the picture must fit into, in pixels, both at least 1. Its aspect is kept, and it is never
     * larger than the source. */
    uint32_t width;
    uint32_t height;
    /* Called now and then on the calling thread; any result but 0 ends the work. May be null. */
    int (*stop)(void* context);
    void* context;
    /* Filled with one line of text on failure, truncated to `messageSize`. May be null. */
    char* message;
    size_t messageSize;
};

/* A PNG file in memory, upright whatever the orientation that a still picture is stored in, owned by the
 * library until OvnxMediaRelease. */
struct OvnxMediaPicture {
    uint8_t* bytes;
    size_t size;
    uint32_t width;
    uint32_t height;
};

/* Returns the kind of the file by its first bytes, of enum OvnxMediaKind, or a negative status. Decodes
 * nothing. */
__attribute__((visibility("default"))) int32_t OvnxMediaProbe(int fd);

/* Both return a status of enum OvnxMediaStatus and fill `picture` only on success. The video frame is the
 * keyframe at a tenth of the video's length, or a later one if that is nearly one colour. */
__attribute__((visibility("default"))) int32_t OvnxMediaStillThumbnail(int fd,
                                                                       const struct OvnxMediaRequest* request,
                                                                       struct OvnxMediaPicture* picture);
__attribute__((visibility("default"))) int32_t OvnxMediaVideoFrame(int fd,
                                                                   const struct OvnxMediaRequest* request,
                                                                   struct OvnxMediaPicture* picture);
__attribute__((visibility("default"))) void OvnxMediaRelease(struct OvnxMediaPicture* picture);

/* The file that a thumbnail in the cache of the desktop's programs must show. */
struct OvnxMediaOrigin {
    const char* uri;
    int64_t seconds; /* of its last change, since 1970 */
    uint64_t size;   /* bytes */
};

/* Scales down a thumbnail of that cache. OVNX_MEDIA_UNKNOWN_FORMAT when it is a picture of anything else, or
 * not larger than the box. */
__attribute__((visibility("default"))) int32_t OvnxMediaSharedThumbnail(
    int fd, const struct OvnxMediaOrigin* origin, const struct OvnxMediaRequest* request,
    struct OvnxMediaPicture* picture);

/* Fills `name` with the name that the thumbnail has in each folder of the cache. */
#define OVNX_MEDIA_SHARED_NAME_SIZE 37
__attribute__((visibility("default"))) int32_t OvnxMediaSharedName(const char* uri,
                                                                   char name[OVNX_MEDIA_SHARED_NAME_SIZE]);

enum OvnxMediaRemuxFlags {
    OVNX_MEDIA_REMUX_AT_KEYFRAME =
        1 /* the clip starts at the keyframe instead, with nothing before it hidden */
};

/* A part of a video, by times in units of 100 ns. */
struct OvnxMediaRemuxRequest {
    uint64_t start;
    uint64_t end; /* limited to the end of the video */
    uint32_t flags;
    /* As in OvnxMediaRequest. */
    char* message;
    size_t messageSize;
    /* Set on success to the number of tracks with nothing in that part, which the clip does not have. May be
     * null. */
    uint32_t* leftOut;
};

/* Copies that part of an MP4 file, whole or in fragments, without re-encoding, to `output`: an empty regular
 * file, open for reading and writing. The clip starts with the frame that is shown at the start. Frames are
 * copied from the last point on from which it can be decoded, and an edit list makes players show only the
 * part. All tracks are copied, with their sample descriptions, names and languages, and what else describes
 * the tracks, the movie and the file, byte for byte; chapters are moved to the times of the clip. The "moov"
 * precedes the frames.
 *
 * The clip is opened again, and it is a failure when a track, a sample description, or the first or last
 * sample of a track is not the source's. The output is not made durable, nor removed after a failure.
 * Encrypted files, files that refer to others, and edit lists that change the speed are of unknown format.
 * Returns a status of enum OvnxMediaStatus.
 */
__attribute__((visibility("default"))) int32_t OvnxMediaRemux(int input, int output,
                                                              const struct OvnxMediaRemuxRequest* request);

/* The times of a video's keyframes, in units of 100 ns, ascending, in memory of the caller. */
struct OvnxMediaKeyframeList {
    int64_t* times;
    size_t capacity; /* of `times`; a video with more keyframes is over the limit */
    /* As in OvnxMediaRequest. */
    int (*stop)(void* context);
    void* context;
    /* Filled by the call. */
    size_t count;
    int64_t frame; /* the mean time from one frame to the next */
};

/* Lists the keyframes of an MP4 file by its tables and decodes nothing. A file in fragments, which has no
 * such tables, is of unknown format. Returns a status of enum OvnxMediaStatus and fills the last two members
 * only on success. */
__attribute__((visibility("default"))) int32_t OvnxMediaKeyframes(int fd, struct OvnxMediaKeyframeList* list);

/* Who hears of the packets of a file. Each function may be null and is called on the calling thread. */
struct OvnxMediaPacketListener {
    /* The bytes of a track's packets, as an MP4 has them, one after the other; tracks are counted from 0.
     * What is heard of a track is the same of a file and of what OvnxMediaConvert makes of it. The bytes are
     * valid during the call. Where they have an owner, a listener may return 1 instead of copying them: they
     * are then valid until it passes the owner to OvnxMediaReleasePacket. */
    int (*packet)(void* context, uint32_t track, const char* bytes, size_t size, void* owner);
    /* What was heard so far counts no more: the packets come once more from the first on. */
    void (*restart)(void* context);
    /* So many bytes, often none, were read since the last call; any result but 0 ends the work. */
    int (*read)(void* context, uint64_t bytes);
    void* context;
    /* As in OvnxMediaRequest. */
    char* message;
    size_t messageSize;
};

/* Copies a recording, of Matroska, WebM, QuickTime, MP4 in fragments, Flash video or an MPEG transport
 * stream, without re-encoding, to `output`: an empty regular file, open for reading and writing, or -1 to
 * look at the codecs alone. It becomes an MP4 file that is not in fragments, with all pictures and sounds,
 * languages, titles and chapters. Recordings that were cut off are taken as far as they go, but for QuickTime
 * and MP4. A file with a codec that an MP4 does not take, or with texts, is of unknown format, and the
 * message names the codec.
 *
 * The copy is opened again, and it is a failure when a track has not as many bytes as in the source, or
 * another first or last packet. The output is not made durable, nor removed after a failure. Returns a status
 * of enum OvnxMediaStatus.
 */
__attribute__((visibility("default"))) int32_t OvnxMediaConvert(
    int input, int output, const struct OvnxMediaPacketListener* listener);

/* Reads all packets of a file of these kinds, or of an MP4 file. Returns a status of enum OvnxMediaStatus. */
__attribute__((visibility("default"))) int32_t OvnxMediaPackets(
    int fd, const struct OvnxMediaPacketListener* listener);

/* Any thread. */
__attribute__((visibility("default"))) void OvnxMediaReleasePacket(void* owner);

#ifdef __cplusplus
}
#endif

#endif
