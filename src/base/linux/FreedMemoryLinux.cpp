#include <malloc.h>

#include "base/FreedMemory.h"

namespace KXP::Platform {

void ReturnFreedMemory() {
#ifdef __GLIBC__
    (void)malloc_trim(0);
#endif
}

}  // namespace KXP::Platform
