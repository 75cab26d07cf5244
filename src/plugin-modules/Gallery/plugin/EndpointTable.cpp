// Which request runs what. A row here and an entry in the catalogue make an endpoint.

#include "plugin-modules/Gallery/plugin/GalleryPlugin.h"
#include "plugin-modules/Gallery/src/endpoints/DriveTasks.h"
#include "plugin-modules/Gallery/src/endpoints/GetFolderListing.h"
#include "plugin-modules/Gallery/src/endpoints/GetImageDimensions.h"

void GalleryPlugin::RegisterEndpoints() {
    RegisterAsyncTask("EnumerateDrives", &EnumerateDrives::Launch);
    RegisterAsyncTask("GetDriveInfo", &GetDriveInfo::Launch);
    RegisterAsyncTask("GetFolderListing", &GetFolderListing::Launch);
    RegisterAsyncTask("IsDirectoryWriteable", &IsDirectoryWritable::Launch);
    RegisterAsyncTask("GetImageFileDimensions", &GetImageDimensions::Launch);
}
