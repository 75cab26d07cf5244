#include "libraries/cobalix-util/cloud/ProductCloud.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "base/FileDescriptor.h"
#include "base/Places.h"
#include "base/ReadWrite.h"
#include "libraries/cobalix-util/cloud/Error.h"
#include "libraries/cobalix-util/cloud/Manifest.h"

namespace KXP::Cloud {

const char* OtherCloud() {
    const char* address = std::getenv("COBALIX_CLOUD_SYNC_URL");
    return address && *address ? address : nullptr;
}

std::string ProductCloudFolder() {
    return GetLibraryPath() + "/../../Resources/data/cloudsync";
}

std::string ReadProductManifest(const std::string& cloudFolder, const std::string& remoteFolder) {
    if (!IsPlainPath(remoteFolder)) throw Error("a folder that may not be used");
    const FileDescriptor file = OpenForRead(cloudFolder + "/" + remoteFolder + "/" + kManifestName);
    FileBytes content;
    if (!file.IsOpen()) throw Error(std::string(kManifestName) + ": no such file");
    if (!ReadWhole(file, kMaxManifestBytes, content))
        throw Error(std::string(kManifestName) + ": " + std::generic_category().message(errno));
    std::string text(content.view());
    try {
        ParseManifest(text);
    } catch (const Error& error) {
        throw Error(std::string(kManifestName) + ": " + error.what());
    }
    return text;
}

}  // namespace KXP::Cloud
