#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"

#include "plugin-modules/Gallery/src/media/CaptureFolder.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"

ZvGalleryAPI::ZvGalleryAPI(KXP::PluginModuleBase& plugin, KXP::TaskQueue& queue)
    : plugin_(plugin), queue_(queue) {}

std::string ZvGalleryAPI::GetGalleryPath() {
    std::string path = settings_.GetGalleryPath();
    if (path.empty() || path.back() != '/') path += '/';
    return path;
}

int32_t ZvGalleryAPI::CheckIfZv(const std::string& path, bool& isOwn) {
    media::SniffResult result;
    const int32_t code = media::SniffFile(path, result);
    isOwn = result.isOwn;
    return code;
}

int32_t ZvGalleryAPI::CheckIfZv(const std::string& path, bool& isOwn, std::string& type, std::string& subtype,
                                std::string& source) {
    media::SniffResult result;
    const int32_t code = media::SniffFile(path, result);
    isOwn = result.isOwn;
    if (code < 0) return code;
    type = result.fileType;
    subtype = result.fileSubType;
    source = result.fileSource;
    return code;
}

int32_t ZvGalleryAPI::CheckIfJPGFileSizeIsValid(const std::string& path, bool& isValid) {
    return media::CheckIfJPGFileSizeIsValid(path, isValid);
}

bool ZvGalleryAPI::IsDirectoryEmpty(const std::string& path, bool onlyOwn) {
    return media::IsDirectoryEmpty(path, onlyOwn);
}
