#include "plugin-modules/Gallery/src/endpoints/Remove.h"

#include <stdexcept>

#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/text/TextUtil.h"
#include "plugin-modules/Gallery/src/media/CaptureFolder.h"

void Remove::Parse(const KXP::Value& params, const UGCTracker& tracker) {
    file_ = KXP::jsonGetValueOrDefault<std::string>(params, "file", "");
    if (file_.empty()) throw std::invalid_argument("File path is empty");
    // "forceDelete" has no meaning on a platform without write-protected files.
    if (!tracker.IsTrackedFile(file_))
        throw std::invalid_argument("File path is not ZORVEX tracked UGC file");
}

KXP::RetVal Remove::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const std::shared_ptr<UGCTracker> tracker = Tracker();
        Parse(params, *tracker);
        tracker->UntrackFile(file_);
        KXP::RetVal deleted = DeleteFile();
        if (deleted.Failed()) return deleted;

        std::string thumbnail;
        const size_t dot = file_.rfind('.');
        if (dot != std::string::npos &&
            media::CheckIfThumbnailExistsForFile(file_, KXP::ToLower(file_.substr(dot)), thumbnail)) {
            // Pages have come to know a deleted thumbnail by this answer, code 0 and all; the folder stays.
            return {KXP::FileDelete(thumbnail, true), "Unable to delete matching thumbnail file", 0};
        }
        KXP::DirectoryRemove(file_.substr(0, file_.rfind('/') + 1));
        return {};
    });
}

KXP::RetVal Remove::DeleteFile() {
    const bool isThere = KXP::FileExists(file_) || KXP::DirectoryExists(file_);
    const bool keep = isThere && !media::MayDeleteCapture(file_, api().GetGalleryPath());
    const int code = keep ? KXP::Code::kAccessDenied : KXP::FileDelete(file_, true);
    return {code, code < 0 ? "Unable to delete file" : "Success", 0};
}
