// What Darwin adds to the calls that open and control files.
#pragma once

#include_next <fcntl.h>

#define O_SEARCH 0x40100000
#define O_NOFOLLOW_ANY 0x20000000
#define F_FULLFSYNC 51
#define F_GETPATH 50
#define F_PREALLOCATE 42
#define F_ALLOCATEALL 0x00000004
#define F_PEOFPOSMODE 3

typedef struct fstore {
    unsigned fst_flags;
    int fst_posmode;
    off_t fst_offset;
    off_t fst_length;
    off_t fst_bytesalloc;
} fstore_t;

#define F_RDADVISE 44

struct radvisory {
    off_t ra_offset;
    int ra_count;
};
