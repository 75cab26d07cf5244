#include <atomic>
#include <cstdlib>
#include <exception>

#include "CobalixUtil.h"
#include "base/Places.h"
#include "libraries/cobalix-util/cloud/Sync.h"

namespace KXP {
namespace {

// A call is over once this differs from what it was at the call's start; so an abort needs no list of calls,
// and those that come later know nothing of it.
std::atomic<unsigned> aborts{0};

Cloud::StopAsked AbortedFromNowOn() {
    return [before = aborts.load()] { return aborts.load() != before; };
}

// The source that comes with the product lies at the place that this library has in it.
Cloud::Url BaseUrl() {
    const char* base = std::getenv("COBALIX_CLOUD_SYNC_URL");
    if (base && *base) return Cloud::Url(base);
    return Cloud::Url::OfFolder(GetLibraryPath() + "/../../Resources/data/cloudsync");
}

// False, and told in the log, for whatever goes wrong: callers are in the middle of other things, and most of
// them without a cloud for most of their life.
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
