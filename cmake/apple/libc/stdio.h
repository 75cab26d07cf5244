// What Darwin adds to the calls that rename.
#include_next <stdio.h>

#ifndef RENAME_EXCL
#define RENAME_EXCL 0x00000004
#ifdef __cplusplus
extern "C"
#endif
    int
    renameatx_np(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags);
#endif
