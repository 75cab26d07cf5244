#include <malloc/malloc.h>

#include "base/FreedMemory.h"

namespace KXP::Platform {

void ReturnFreedMemory() {
    (void)malloc_zone_pressure_relief(nullptr, 0);
}

// The system's heap has as many parts as processors.
void KeepHeapTogether() {}

// It does so by itself.
void ReturnLargeBlocks() {}

}  // namespace KXP::Platform
