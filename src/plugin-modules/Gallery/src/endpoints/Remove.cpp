#include "plugin-modules/Gallery/src/endpoints/Remove.h"

#include <stdexcept>

#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/text/TextUtil.h"
#include "plugin-modules/Gallery/src/media/CaptureFolder.h"
#include "plugin-modules/Gallery/src/tracker/FailedLook.h"

void Remove::Parse(const KXP::Value& params, const UGCTracker& tracker) {
    file_ = KXP::jsonGetValueOrDefault<std::string>(params, "file", "");
    if (file_.empty()) throw std::invalid_argument("File path is empty");
    // "forceDelete" has no meaning on a platform without write-protected files.
    TrackedUGC record;
    if (tracker.GetUGCData(file_, record).Failed())
        throw std::invalid_argument("File path is not ZORVEX tracked UGC file");
    file_ = record.path;
}

KXP::RetVal Remove::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const std::shared_ptr<UGCTracker> tracker = Tracker();
        Parse(params, *tracker);
        // Anybody can write any path into the tracker's file.
        if (!IsGone(file_) && !media::MayDeleteCapture(file_, tracker->gallery()))
            return {KXP::Code::kAccessDenied, "Not a capture of this product", 0};
        tracker->UntrackFile(file_);
        const int code = KXP::FileDelete(file_, true);
        if (code < 0) {
            // Still there, and to be seen again, with what is kept of it.
            tracker->TrackFile(file_);
            return {code, "Unable to delete file", 0};
        }

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
