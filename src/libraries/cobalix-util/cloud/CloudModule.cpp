#include "libraries/cobalix-util/cloud/CloudModule.h"

#include <exception>

#include "base/Places.h"
#include "libraries/cobalix-util/cloud/ProductCloud.h"
#include "libraries/cobalix-util/cloud/Sync.h"

namespace {

using namespace KXP;

Cloud::Url BaseUrl() {
    const char* other = Cloud::OtherCloud();
    return other ? Cloud::Url(other) : Cloud::Url::OfFolder(Cloud::ProductCloudFolder());
}

template <typename Work>
bool Try(const Cloud::StopAsked& stopAsked, Cloud::Failure& failure, const Work& work) {
    try {
        Cloud::Sync sync(BaseUrl(), {}, stopAsked);
        work(sync);
        return true;
    } catch (const std::exception& error) {
        failure.Set(error.what());
        return false;
    }
}

}  // namespace

bool CobalixCloudFetchManifest(const char* remoteFolder, const Cloud::StopAsked& stopAsked,
                               std::string& manifest, Cloud::Failure& failure) noexcept {
    return Try(stopAsked, failure, [&](Cloud::Sync& sync) { manifest = sync.FetchManifest(remoteFolder); });
}

bool CobalixCloudFetchFiles(const char* remoteFolder, const char* localFolder, const std::string& manifest,
                            const Cloud::StopAsked& stopAsked, Cloud::Failure& failure) noexcept {
    return Try(stopAsked, failure, [&](Cloud::Sync& sync) {
        sync.FetchFiles(remoteFolder, Platform::AppSupportFolder() + kProductFolder, localFolder, manifest);
    });
}
