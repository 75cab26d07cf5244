#include "plugin-modules/Gallery/src/transcode/TranscoderPlatformContext.h"

#include <memory>

#include <dlfcn.h>

#include "CobalixUtil.h"
#include "common/product/Profile.h"
#include "common/system/System.h"
#include "common/text/SafeString.h"
#include "common/text/TextUtil.h"

namespace {

constexpr int32_t kNotAvailable = -9;

template <typename Function>
void FindExport(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (!function) KXP_LOG(KXP::LogFailure, "export %s not found in libovnxcodelib", name);
}

}  // namespace

TranscoderPlatformContext::~TranscoderPlatformContext() {
    if (!library_) return;
    Shutdown();
    dlclose(library_);
}

bool TranscoderPlatformContext::Load(const std::string& folder) {
    if (library_) {
        KXP_LOG(KXP::LogMilestone, "libovnxcodelib already loaded");
        return true;
    }
    const std::string path = folder + "/libovnxcodelib" + KXP::Platform::kLibrarySuffix;
    library_ = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (!library_) {
        KXP_LOG(KXP::LogFailure, "%s", dlerror());
        return false;
    }
    FindExport(library_, "OvsXcodeRemux", remux_);
    FindExport(library_, "InitializeTranscoder", initialize_);
    FindExport(library_, "ShutdownTranscoder", shutdown_);
    return true;
}

void TranscoderPlatformContext::Initialize() {
    if (!initialize_) return;
    const auto params = std::make_unique<ovsxcodeapi::InitParams>();
    wcscpy_s(params->productDirectory, ovsxcodeapi::kTextSize,
             KXP::Utf8ToWide(KXP::GetProductBinaryDirectory()).c_str());
    (void)initialize_(params.get());
}

void TranscoderPlatformContext::Shutdown() {
    if (shutdown_)
        (void)shutdown_();
    else
        KXP_LOG(KXP::LogFailure, "Transcode export ShutdownTranscoder not available");
}

int32_t TranscoderPlatformContext::Remux(ovsxcodeapi::RemuxParams& params) const {
    if (remux_) return remux_(params);
    KXP_LOG(KXP::LogFailure, "Transcode export OvsXcodeRemux not available");
    return kNotAvailable;
}
