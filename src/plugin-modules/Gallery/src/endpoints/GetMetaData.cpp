#include "plugin-modules/Gallery/src/endpoints/GetMetaData.h"

#include <stdexcept>
#include <utility>

#include "CobalixUtil.h"
#include "common/JsonHelpers.h"
#include "common/TextUtil.h"

namespace {

// The sides of a thumbnail come together or not at all.
void CheckSize(const KXP::Value& params) {
    const auto has = [&](const char* side) {
        if (!KXP::jsonObjectHasKey(params, side, false)) return false;
        if (KXP::jsonGetValue<unsigned int>(params, side) == 0)
            throw std::invalid_argument('"' + std::string(side) + "\" should be a positive integer");
        return true;
    };
    const bool width = has("width");
    const bool height = has("height");
    if (height && !width) throw std::invalid_argument("\"height\" defined, but not \"width\"");
    if (width && !height) throw std::invalid_argument("\"width\" defined, but not \"height\"");
}

}  // namespace

KXP::RetVal GetMetaData::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const auto file = KXP::jsonGetValue<std::string>(params, "file");
        CheckSize(params);
        TrackedUGC ugc;
        const KXP::RetVal found = Tracker()->GetUGCData(file, ugc);
        if (!found.Failed()) {
            ugc_ = std::move(ugc);
        } else if (found.code == KXP::Code::kNotFound) {
            KXP_LOG(KXP::LogMilestone, "GetMetaData - Unable to get metadata");
        } else {
            KXP_LOG(KXP::LogMilestone, "GetMetaData - Failed to open handle to file in allowed time");
        }
        return {};
    });
}

void GetMetaData::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    if (!ugc_) return;
    // The members of the record's own form, in an order and under names of this request.
    KXP::Value whole;
    TrackedUGC::CreateUGCJSONValue(*ugc_, whole, allocator);
    const auto take = [&](const char* key, const char* as) {
        const auto member = whole.FindMember(key);
        if (member == whole.MemberEnd()) return;
        response.AddMember(KXP::Value(rapidjson::StringRef(as)), member->value, allocator);
    };
    for (const char* key : {"fileType", "fileSubType", "fileSource", "DRSName", "DRSProfileName", "cmsId",
                            "date", "fileSizeKB", "eventTimeStamp"})
        take(key, key);
    if (ugc_->fileType == "video") {
        take("duration", "duration");
        take("msDuration", "msDuration");
        take("audioType", "audiotype");
    }
    take("memeInfo", "memeInfo");
}
