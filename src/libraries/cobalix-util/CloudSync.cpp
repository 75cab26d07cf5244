#include <atomic>
#include <exception>
#include <stdexcept>
#include <string>

#include <dlfcn.h>

#include "CobalixUtil.h"
#include "base/LibraryLoading.h"
#include "base/Places.h"
#include "libraries/cobalix-util/cloud/CloudModule.h"
#include "libraries/cobalix-util/cloud/ProductCloud.h"

namespace KXP {
namespace {

// A call is aborted once this differs from its value at the call's start; so an abort needs no list of calls
// and does not affect later ones.
std::atomic<unsigned> aborts{0};

Cloud::StopAsked AbortedFromNowOn() {
    return [before = aborts.load()] { return aborts.load() != before; };
}

// libCobalixCloud, from the folder of this library, for the time of one call: it links this library for the
// log, so this one could not be unloaded while it stays open.
class CloudModule {
  public:
    // Throws std::runtime_error, with the linker's reason.
    CloudModule() {
        const std::string path = GetLibraryPath() + "/libCobalixCloud" + Platform::kLibrarySuffix;
        library_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!library_) throw std::runtime_error(dlerror());
    }
    ~CloudModule() { dlclose(library_); }
    CloudModule(const CloudModule&) = delete;
    CloudModule& operator=(const CloudModule&) = delete;

    template <typename Function>
    Function Find(const char* name) const {
        const auto function = reinterpret_cast<Function>(dlsym(library_, name));
        if (!function) throw std::runtime_error(std::string("libCobalixCloud has no ") + name);
        return function;
    }

  private:
    void* library_ = nullptr;
};

// Returns false and logs whatever goes wrong: callers are in the middle of other work, and most of them have
// no cloud most of the time.
template <typename Work>
bool Try(const char* remoteFolder, const Work& work) {
    Cloud::Failure failure;
    try {
        if (work(failure)) return true;
    } catch (const std::exception& error) {
        failure.Set(error.what());
    }
    KXP_LOG(LogMilestone, "Cloud sync of %s failed: %s", remoteFolder, failure.text);
    return false;
}

}  // namespace

bool CloudSyncFetchManifestBegin(const char* remoteFolder, std::string& manifest, void*& context) {
    manifest.clear();
    // Nothing outlives the fetch, so the matching end has nothing to do.
    context = nullptr;
    return Try(remoteFolder, [&](Cloud::Failure& failure) {
        if (!Cloud::OtherCloud()) {
            manifest = Cloud::ReadProductManifest(Cloud::ProductCloudFolder(), remoteFolder);
            return true;
        }
        const Cloud::StopAsked stopAsked = AbortedFromNowOn();
        const CloudModule module;
        const auto fetch = module.Find<decltype(&CobalixCloudFetchManifest)>("CobalixCloudFetchManifest");
        return fetch(remoteFolder, stopAsked, manifest, failure);
    });
}

void CloudSyncFetchManifestEnd(const char*, const char*, const std::string&, void*) {}

bool CloudSyncObject(const char* remoteFolder, const char* localFolder, const std::string& manifest) {
    return Try(remoteFolder, [&](Cloud::Failure& failure) {
        const Cloud::StopAsked stopAsked = AbortedFromNowOn();
        const CloudModule module;
        const auto fetch = module.Find<decltype(&CobalixCloudFetchFiles)>("CobalixCloudFetchFiles");
        return fetch(remoteFolder, localFolder, manifest, stopAsked, failure);
    });
}

void CloudSyncAbort() {
    ++aborts;
}

}  // namespace KXP
