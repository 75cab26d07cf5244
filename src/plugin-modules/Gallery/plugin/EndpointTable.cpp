// Which request runs what. A row here and an entry in the catalogue make an endpoint.

#include "plugin-modules/Gallery/plugin/GalleryPlugin.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"
#include "plugin-modules/Gallery/src/endpoints/DriveTasks.h"
#include "plugin-modules/Gallery/src/endpoints/GetFolderListing.h"
#include "plugin-modules/Gallery/src/endpoints/GetImageDimensions.h"

void GalleryPlugin::RegisterEndpoints() {
    RegisterAsyncTask("GetFolderListing", &GetFolderListing::Launch);
    RegisterAsyncTask("EnumerateDrives", &EnumerateDrives::Launch);
    RegisterAsyncTask("GetImageFileDimensions", &GetImageDimensions::Launch);
    RegisterAsyncTask("IsDirectoryWriteable", &IsDirectoryWritable::Launch);
    RegisterAsyncTask("GetDriveInfo", &GetDriveInfo::Launch);
    RegisterSyncMethod("GetSettings", api_.get(), &ZvGalleryAPI::GetSettings);
    RegisterSyncMethod("SetSettings", api_.get(), &ZvGalleryAPI::SetSettings);
    RegisterSyncMethod("CheckDiskSpace", api_.get(), &ZvGalleryAPI::CheckDiskSpace);
}
