// Where trash can be.
#pragma once

#include <string>
#include <vector>

#include "gallery-host/trash/Trash.h"

namespace host {

struct TrashFolder {
    std::string path;  // holds "info" and "files"
    std::string top;   // what relative paths in it start at
};

// The folders that exist and are this user's own. Of network drives and the like only those are looked at
// that hold one of `folders`.
std::vector<TrashFolder> FindTrashFolders(const std::vector<std::string>& folders);

// The files in these folders that were in the gallery, those first that were deleted last.
std::vector<TrashedFile> ListTrashed(const std::string& gallery, const std::vector<TrashFolder>& folders);

}  // namespace host
