// Volumes.
#pragma once

#include <stdint.h>
#include <sys/types.h>

#define MNT_RDONLY 0x00000001
#define MNT_LOCAL 0x00001000
#define MNT_DONTBROWSE 0x00100000
#define MNT_WAIT 1

struct statfs {
    uint32_t f_bsize;
    int32_t f_iosize;
    uint64_t f_blocks;
    uint64_t f_bfree;
    uint64_t f_bavail;
    uint64_t f_files;
    uint64_t f_ffree;
    uint64_t f_fsid;
    uid_t f_owner;
    uint32_t f_type;
    uint32_t f_flags;
    uint32_t f_fssubtype;
    char f_fstypename[16];
    char f_mntonname[1024];
    char f_mntfromname[1024];
};

extern "C" {
int statfs(const char* path, struct statfs* volume);
int fstatfs(int fd, struct statfs* volume);
int getmntinfo_r_np(struct statfs** volumes, int mode);
}
