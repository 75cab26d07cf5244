#include <malloc.h>

#include "base/FreedMemory.h"

namespace KXP::Platform {

void ReturnFreedMemory() {
#ifdef __GLIBC__
    (void)malloc_trim(0);
#endif
}

void KeepHeapTogether() {
#ifdef __GLIBC__
    (void)mallopt(M_ARENA_MAX, 2);
#endif
}

void ReturnLargeBlocks() {
#ifdef __GLIBC__
    (void)mallopt(M_MMAP_THRESHOLD, 1 << 20);
#endif
}

}  // namespace KXP::Platform
