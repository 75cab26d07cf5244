#include "libraries/ovnx-codelib/MediaLibrary.h"

#include <stdexcept>

#include <dlfcn.h>

namespace codelib {

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
