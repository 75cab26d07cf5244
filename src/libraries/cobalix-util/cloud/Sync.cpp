#include "libraries/cobalix-util/cloud/Sync.h"

#include <vector>

#include "CobalixUtil.h"
#include "libraries/cobalix-util/cloud/Manifest.h"
#include "libraries/cobalix-util/cloud/Placement.h"

namespace KXP::Cloud {
namespace {

void RequirePlain(const std::string& folder) {
    if (!IsPlainPath(folder)) throw Error("a folder that may not be used");
}

// Tells which file an error is of.
template <typename Work>
void For(const std::string& path, const Work& work) {
    try {
        work();
    } catch (const Error& error) {
        throw Error(path + ": " + error.what());
    }
}

}  // namespace

std::string Sync::FetchManifest(const std::string& remoteFolder) {
    RequirePlain(remoteFolder);
    std::string text;
    For(kManifestName, [&] {
        const Url url = base_.Below(remoteFolder).Below(kManifestName);
        transfer_.Fetch(url, kMaxManifestBytes,
                        [&](const char* bytes, size_t size) { text.append(bytes, size); });
        ParseManifest(text);
    });
    return text;
}

void Sync::FetchFiles(const std::string& remoteFolder, const std::string& dataFolder,
                      const std::string& localFolder, const std::string& manifest) {
    RequirePlain(remoteFolder);
    RequirePlain(localFolder);
    const std::vector<ManifestFile> files = ParseManifest(manifest);
    if (files.empty()) return;
    const Url remote = base_.Below(remoteFolder);
    const LocalFolder local(dataFolder + "/" + localFolder);
    size_t fetched = 0;
    uint64_t bytes = 0;
    for (const ManifestFile& file : files) {
        For(file.path, [&] {
            ThrowIfStopped(stopAsked_);
            if (local.Holds(file, stopAsked_)) return;
            IncomingFile incoming(local, file);
            transfer_.Fetch(remote.Below(file.path), file.size,
                            [&](const char* piece, size_t size) { incoming.Add(piece, size); });
            incoming.Place();
            ++fetched;
            bytes += file.size;
            KXP_LOG(LogDetail, "Cloud sync of %s: %s, %llu bytes", remoteFolder.c_str(), file.path.c_str(),
                    static_cast<unsigned long long>(file.size));
        });
    }
    KXP_LOG(LogDetail, "Cloud sync of %s: %zu of %zu files fetched, %llu bytes", remoteFolder.c_str(),
            fetched, files.size(), static_cast<unsigned long long>(bytes));
}

}  // namespace KXP::Cloud
