// Which request runs what. A row here and an entry in the catalogue make an endpoint.

#include "plugin-modules/Gallery/plugin/GalleryPlugin.h"
#include "plugin-modules/Gallery/src/endpoints/GetFolderListing.h"
#include "plugin-modules/Gallery/src/endpoints/GetImageDimensions.h"

void GalleryPlugin::RegisterEndpoints() {
    RegisterAsyncTask("GetFolderListing", &GetFolderListing::Launch);
    RegisterAsyncTask("GetImageFileDimensions", &GetImageDimensions::Launch);
}
