#include "plugin-modules/Gallery/src/thumbnails/MediaModule.h"

#include <exception>
#include <memory>
#include <stdexcept>

#include <dlfcn.h>

#include "CobalixUtil.h"
#include "common/Profile.h"
#include "common/System.h"

namespace {

std::unique_ptr<const MediaModule> OpenOrLog() {
    try {
        return std::make_unique<const MediaModule>(KXP::GetPluginBinaryDirectory() +
                                                   "/Contents/Frameworks/dependencies/libovnxmedia" +
                                                   KXP::Platform::kLibrarySuffix);
    } catch (const std::exception& error) {
        KXP_LOG(KXP::LogFailure, "No thumbnails: %s", error.what());
        return nullptr;
    }
}

template <typename Function>
void Find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (!function) throw std::runtime_error(std::string("libovnxmedia has no ") + name);
}

}  // namespace

const MediaModule* MediaModule::Get() {
    static const std::unique_ptr<const MediaModule> module = OpenOrLog();
    return module.get();
}

MediaModule::MediaModule(const std::string& path) {
    // Not to be closed: its libraries leave threads' data behind.
    void* const library =
        dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE | KXP::Platform::OwnScopeFlag());
    if (!library) throw std::runtime_error(dlerror());
    Find(library, "OvnxMediaProbe", probe);
    Find(library, "OvnxMediaStillThumbnail", stillThumbnail);
    Find(library, "OvnxMediaVideoFrame", videoFrame);
    Find(library, "OvnxMediaRelease", release);
}
