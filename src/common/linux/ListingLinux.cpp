#include "CobalixUtil.h"
#include "common/FolderReader.h"
#include "common/System.h"
#include "common/TextUtil.h"

namespace KXP::Platform {

std::vector<std::string> ListFolder(const std::string& folder, bool folders) {
    std::vector<std::string> names;
    FolderReader reader(folder);
    int illegible = 0;
    while (reader.Next()) {
        if (!IsValidUtf8(reader.Name())) {
            ++illegible;
        } else if (reader.Kind() == (folders ? EntryKind::Folder : EntryKind::Other)) {
            names.emplace_back(reader.Name());
        }
    }
    if (illegible > 0)
        KXP_LOG(LogMilestone, "Passed over %d names in %s that are not UTF-8", illegible, folder.c_str());
    return names;
}

}  // namespace KXP::Platform
