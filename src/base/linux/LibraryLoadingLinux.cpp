#include <dlfcn.h>

#include "base/LibraryLoading.h"

namespace KXP::Platform {

const char* const kLibrarySuffix = ".so";

int OwnScopeFlag() {
#ifdef GALLERY_SANITIZED
    return 0;  // the sanitizer's own malloc would not be found first
#else
    return RTLD_DEEPBIND;
#endif
}

}  // namespace KXP::Platform
