#include "libraries/ovnx-codelib/MediaLibrary.h"

#include <string>

#include <dlfcn.h>

#include "common/Profile.h"

namespace codelib {

// Libraries are bound by two levels of names here: none takes another's codecs.
void* MediaLibrary::Open() {
    return dlopen((KXP::GetLibraryPath() + "/libovnxmedia.dylib").c_str(), RTLD_NOW | RTLD_LOCAL);
}

}  // namespace codelib
