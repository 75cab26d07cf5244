#include "CobalixUtil.h"

// No transfer is built into this library, so every call ends as a cloud that cannot be reached does.
namespace KXP {

bool CloudSyncFetchManifestBegin(const char* remoteFolder, std::string& manifest, void*& context) {
    manifest.clear();
    context = nullptr;
    KXP_LOG(LogMilestone, "No cloud to fetch the manifest of %s from", remoteFolder);
    return false;
}

void CloudSyncFetchManifestEnd(const char*, const char*, const std::string&, void*) {}

bool CloudSyncObject(const char* remoteFolder, const char*, const std::string&) {
    KXP_LOG(LogMilestone, "No cloud to fetch the files of %s from", remoteFolder);
    return false;
}

void CloudSyncAbort() {}

}  // namespace KXP
