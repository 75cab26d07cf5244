#include <atomic>
#include <cstdlib>
#include <exception>

#include "CobalixUtil.h"
#include "base/Places.h"
#include "libraries/cobalix-util/cloud/Sync.h"

namespace KXP {
namespace {

// A call is aborted once this differs from its value at the call's start; so an abort needs no list of calls
// and does not affect later ones.
std::atomic<unsigned> aborts{0};

Cloud::StopAsked AbortedFromNowOn() {
    return [before = aborts.load()] { return aborts.load() != before; };
}

// The product's own source has a fixed place relative to this library.
Cloud::Url BaseUrl() {
    const char* base = std::getenv("COBALIX_CLOUD_SYNC_URL");
    if (base && *base) return Cloud::Url(base);
    return Cloud::Url::OfFolder(GetLibraryPath() + "/../../Resources/data/cloudsync");
}

// Returns false and logs whatever goes wrong: callers are in the middle of other work, and most of them have
// no cloud most of the time.
template <typename Work>
bool Try(const char* remoteFolder, const Work& work) {
    try {
        Cloud::Sync sync(BaseUrl(), {}, AbortedFromNowOn());
        work(sync);
        return true;
    } catch (const std::exception& error) {
        KXP_LOG(LogMilestone, "Cloud sync of %s failed: %s", remoteFolder, error.what());
        return false;
    }
}

}  // namespace

bool CloudSyncFetchManifestBegin(const char* remoteFolder, std::string& manifest, void*& context) {
    manifest.clear();
    // Nothing outlives the fetch, so the matching end has nothing to do.
    context = nullptr;
    return Try(remoteFolder, [&](Cloud::Sync& sync) { manifest = sync.FetchManifest(remoteFolder); });
}

void CloudSyncFetchManifestEnd(const char*, const char*, const std::string&, void*) {}

bool CloudSyncObject(const char* remoteFolder, const char* localFolder, const std::string& manifest) {
    return Try(remoteFolder, [&](Cloud::Sync& sync) {
        sync.FetchFiles(remoteFolder, Platform::AppSupportFolder() + kProductFolder, localFolder, manifest);
    });
}

void CloudSyncAbort() {
    ++aborts;
}

}  // namespace KXP
