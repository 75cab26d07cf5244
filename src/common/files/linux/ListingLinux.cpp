#include "base/FolderReader.h"
#include "common/files/DirUtil.h"
#include "common/system/System.h"

namespace KXP::Platform {

std::vector<std::string> ListFolder(const std::string& folder, bool folders) {
    std::vector<std::string> names;
    FolderReader reader(folder);
    while (reader.Next()) {
        if (reader.Kind() == (folders ? EntryKind::Folder : EntryKind::Other))
            names.emplace_back(reader.Name());
    }
    LogIllegibleNames(reader, folder);
    return names;
}

}  // namespace KXP::Platform
