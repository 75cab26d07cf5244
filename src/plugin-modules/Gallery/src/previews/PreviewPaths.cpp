#include "plugin-modules/Gallery/src/previews/PreviewPaths.h"

#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"

namespace {

bool LiesDirectlyIn(const std::string& path, const std::string& folder) {
    const size_t slash = path.rfind('/');
    return slash != std::string::npos && KXP::SamePath(path.substr(0, slash + 1), folder);
}

}  // namespace

KXP::RetVal PreviewPaths::Delete(const std::string& path, const std::string& tempFolder) {
    const auto remembered = paths_.find(path);
    const bool isKnown = remembered != paths_.end() || LiesDirectlyIn(path, tempFolder);
    if (!isKnown || !KXP::IsRegularFile(path))
        return {KXP::Code::kInvalidArgument, "Preview path is not known", 0};
    const int code = KXP::FileDelete(path, true);
    if (code < 0) return {code, "Unable to delete preview", 0};
    if (remembered != paths_.end()) paths_.erase(remembered);
    return {};
}
