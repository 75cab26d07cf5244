#include "base/LibraryLoading.h"

namespace KXP::Platform {

const char* const kLibrarySuffix = ".dylib";

// Names already carry the library that they belong to.
int OwnScopeFlag() {
    return 0;
}

}  // namespace KXP::Platform
