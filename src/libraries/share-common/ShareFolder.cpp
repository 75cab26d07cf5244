#include "libraries/share-common/ShareFolder.h"

#include "common/product/Profile.h"

std::vector<std::string> GetShareFolderPath() {
    return {KXP::GetProductDataDirectory(KXP::ProfileProduct), KXP::kShareFolder};
}
