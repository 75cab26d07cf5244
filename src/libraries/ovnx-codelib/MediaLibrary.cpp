#include "libraries/ovnx-codelib/MediaLibrary.h"

#include <stdexcept>
#include <string>

#include <dlfcn.h>

#include "common/Profile.h"
#include "common/System.h"

namespace codelib {

void* MediaLibrary::Open() {
    const std::string path = KXP::GetLibraryPath() + "/libovnxmedia" + KXP::Platform::kLibrarySuffix;
    return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | KXP::Platform::OwnScopeFlag());
}

MediaLibrary::MediaLibrary() {
    if (handle_) remux_ = reinterpret_cast<decltype(remux_)>(dlsym(handle_, "OvnxMediaRemux"));
    if (remux_) return;
    const char* reason = dlerror();
    const std::runtime_error error(reason ? reason : "OvnxMediaRemux is not in it");
    if (handle_) dlclose(handle_);
    throw error;
}

MediaLibrary::~MediaLibrary() {
    dlclose(handle_);
}

}  // namespace codelib
