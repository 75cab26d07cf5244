#include <string>

#include <dlfcn.h>

#include "common/Profile.h"
#include "libraries/ovnx-codelib/MediaLibrary.h"

#if defined(__has_feature)
#define HAS_SANITIZER (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HAS_SANITIZER 1
#else
#define HAS_SANITIZER 0
#endif

namespace codelib {
namespace {

// The client has codecs of the same names, which the library would otherwise be bound to. A sanitizer has to
// stand before everything else, and refuses.
constexpr int kOwnScope = HAS_SANITIZER ? 0 : RTLD_DEEPBIND;

}  // namespace

void* MediaLibrary::Open() {
    return dlopen((KXP::GetLibraryPath() + "/libovnxmedia.so").c_str(), RTLD_NOW | RTLD_LOCAL | kOwnScope);
}

}  // namespace codelib
