// Where trash can be.
#pragma once

#include <string>
#include <vector>

namespace host {

struct TrashFolder {
    std::string path;  // holds "info" and "files"
    std::string top;   // what relative paths in it start at
};

// The folders that exist and are this user's own. `gallery` is for the network drive that it may be on.
std::vector<TrashFolder> FindTrashFolders(const std::string& gallery);

}  // namespace host
