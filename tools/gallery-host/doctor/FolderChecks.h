// Looks at the folders that the product uses, and at what the system has for them.
#pragma once

#include <string>

#include "gallery-host/doctor/Finding.h"

namespace host {

struct ProductFolders {
    std::string gallery;
    bool isDefaultGallery = false;
    std::string temporary;
    std::string share;
    std::string cache;
};

Findings CheckFolders(const ProductFolders& folders);

}  // namespace host
