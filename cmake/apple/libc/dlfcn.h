// What Darwin has of libraries at run time without being asked for more than POSIX.
#include_next <dlfcn.h>

#ifndef RTLD_MAIN_ONLY
#define RTLD_MAIN_ONLY ((void*)-5)
typedef struct dl_info {
    const char* dli_fname;
    void* dli_fbase;
    const char* dli_sname;
    void* dli_saddr;
} Dl_info;
#ifdef __cplusplus
extern "C"
#endif
    int
    dladdr(const void* address, Dl_info* info);
#endif
