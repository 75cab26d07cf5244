#include "plugin-modules/Gallery/src/endpoints/GetFolderCRC.h"

#include <string>
#include <vector>

#include "CobalixUtil.h"
#include "common/files/DirUtil.h"
#include "common/json/JsonHelpers.h"
#include "plugin-modules/Gallery/src/media/FolderCrc.h"

namespace {

// Sums wrap at 32 bits and do not depend on the order of the captures.
uint32_t SumOf(const TrackedUGC& ugc) {
    uint32_t sum = 0;
    for (const std::string& text : std::initializer_list<std::string>{
             ugc.path, ugc.fileType, ugc.fileSubType, ugc.fileSource, std::to_string(ugc.sizeKB), ugc.date,
             ugc.profileName, ugc.drsName, ugc.shortName, std::to_string(ugc.cmsId), ugc.duration,
             ugc.highlightName, ugc.topBarText, ugc.bottomBarText})
        sum += media::StringCRC(text);
    return sum;
}

}  // namespace

KXP::RetVal GetFolderCRC::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        auto directory = KXP::jsonGetValue<std::string>(params, "directory");
        if (!directory.empty() && directory.back() == '/') directory.pop_back();
        const std::shared_ptr<UGCTracker> tracker = Tracker();
        const std::string gallery = api().GetGallerySettings()->GetGalleryPath();
        media::CalculateFolderCRC(directory, gallery, crc_);
        if (!KXP::SamePath(directory, gallery)) {
            AddGame(*tracker, directory.substr(directory.rfind('/') + 1));
            return {};
        }
        for (const std::string& game : tracker->GetTrackedGames()) {
            AddGame(*tracker, game);
            crc_ += media::StringCRC(game);
        }
        return {};
    });
}

void GetFolderCRC::AddGame(UGCTracker& tracker, const std::string& game) {
    for (const TrackedUGC& ugc : tracker.GetGameUGC(game))
        crc_ += SumOf(ugc);
}

void GetFolderCRC::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    response.AddMember("crc", crc_, allocator);
}
