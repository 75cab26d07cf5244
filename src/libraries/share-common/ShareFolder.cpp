#include "libraries/share-common/ShareFolder.h"

#include "common/Profile.h"

std::vector<std::string> GetShareFolderPath() {
    return {KXP::GetProductDataDirectory(KXP::ProfileProduct), "Share"};
}
