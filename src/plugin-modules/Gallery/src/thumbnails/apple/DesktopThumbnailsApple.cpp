#include "plugin-modules/Gallery/src/thumbnails/DesktopThumbnails.h"

// The system's own previews are behind its services, in no folder that programs share.
std::string desktop::ThumbnailsFolder() {
    return "";
}
