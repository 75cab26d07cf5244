#include "gallery-host/page/PageMethods.h"

#include <algorithm>

#include "gallery-host/message/Envelope.h"

namespace host::page {
namespace {

bool Contains(const std::vector<std::string>& methods, const std::string& method) {
    return std::find(methods.begin(), methods.end(), method) != methods.end();
}

}  // namespace

const std::vector<std::string>& PageMethods() {
    static const std::vector<std::string> methods = {
        "AddMeme",
        "CancelMontage",
        "CancelPathUpdate",
        "CheckDiskSpace",
        "CopyFile",
        "CreateMontageFromRecipe",
        "DeleteGroupHighlights",
        "EnumerateDrives",
        "GetAppStats",
        "GetAppUGC",
        "GetDriveInfo",
        "GetEventData",
        "GetFileMetadata",
        "GetFolderListing",
        "GetHighlightsCount",
        "GetImageFileDimensions",
        "GetMontageCloudConfig",
        "GetRecentUGC",
        "GetSettings",
        "GetThumbnail",
        "IsDirectoryWriteable",
        "MoveFile",
        "OpenHighlightsGroupSummary",
        "RemoveGalleryItem",
        "SetSettings",
        "Trim",
    };
    return methods;
}

bool IsPageMethod(const std::string& method) {
    return Contains(PageMethods(), method);
}

bool IsNotificationMethod(const std::string& method) {
    return Contains(NotificationMethods(), method);
}

bool OnlyReads(const std::string& method) {
    return method.compare(0, 3, "Get") == 0;
}

}  // namespace host::page
