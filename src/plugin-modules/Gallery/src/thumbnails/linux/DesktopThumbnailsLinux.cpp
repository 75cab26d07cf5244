#include "plugin-modules/Gallery/src/thumbnails/DesktopThumbnails.h"

std::string desktop::ThumbnailsFolder() {
    return "thumbnails";
}
