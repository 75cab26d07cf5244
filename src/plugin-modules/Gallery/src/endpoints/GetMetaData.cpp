#include "plugin-modules/Gallery/src/endpoints/GetMetaData.h"

#include <stdexcept>
#include <string_view>
#include <utility>

#include "CobalixUtil.h"
#include "common/json/JsonHelpers.h"
#include "libraries/share-common/PageWords.h"
#include "plugin-modules/Gallery/src/endpoints/PictureSize.h"

namespace {

// The requested width and height of a thumbnail; both or neither.
struct Box {
    unsigned int width = 0;
    unsigned int height = 0;

    bool IsWanted() const { return width > 0; }
};

Box ReadBox(const KXP::Value& params) {
    Box box;
    box.width = ReadSide(params, "width", "width");
    box.height = ReadSide(params, "height", "height");
    if (box.height > 0 && box.width == 0)
        throw std::invalid_argument("\"height\" defined, but not \"width\"");
    if (box.width > 0 && box.height == 0)
        throw std::invalid_argument("\"width\" defined, but not \"height\"");
    return box;
}

}  // namespace

KXP::RetVal GetMetaData::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const auto file = KXP::jsonGetValue<std::string>(params, "file");
        const Box box = ReadBox(params);
        TrackedUGC ugc;
        const KXP::RetVal found = Tracker()->GetUGCData(file, ugc);
        if (found.Failed()) {
            KXP_LOG(KXP::LogMilestone, found.code == KXP::Code::kNotFound
                                           ? "GetMetaData - Unable to get metadata"
                                           : "GetMetaData - Failed to open handle to file in allowed time");
            return {};
        }
        ugc_ = std::move(ugc);
        if (ugc_->fileType == "other" || !box.IsWanted()) return {};
        if (!Make(file, box.width, box.height))
            KXP_LOG(KXP::LogMilestone, "GetMetaData - Unable to get thumbnail");
        return {};
    });
}

void GetMetaData::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    if (!ugc_) return;
    // The members of the record's own form, in the order of this request.
    KXP::Value whole;
    TrackedUGC::CreateUGCJSONValue(*ugc_, whole, allocator);
    const auto take = [&](const char* key) {
        const auto member = whole.FindMember(key);
        if (member == whole.MemberEnd()) return;
        response.AddMember(KXP::Value(rapidjson::StringRef(key)), member->value, allocator);
    };
    for (const char* key : {"fileType", "fileSubType", "fileSource", "DRSName", "DRSProfileName", "cmsId",
                            "date", "fileSizeKB", "eventTimeStamp"})
        take(key);
    if (ugc_->fileType == "video") {
        take("duration");
        take("msDuration");
        const std::string_view audio = AudioTypeForPages(ugc_->audioType);
        response.AddMember(
            "audiotype", KXP::Value(audio.data(), static_cast<rapidjson::SizeType>(audio.size()), allocator),
            allocator);
    }
    take("memeInfo");
    Write(response, allocator);
}
