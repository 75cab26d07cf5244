#include "plugin-modules/Gallery/src/endpoints/UGCTasks.h"

#include "common/json/JsonHelpers.h"

namespace {

KXP::Value ToArray(const std::vector<TrackedUGC>& list, KXP::Allocator& allocator) {
    KXP::Value array(rapidjson::kArrayType);
    array.Reserve(static_cast<rapidjson::SizeType>(list.size()), allocator);
    for (const TrackedUGC& ugc : list) {
        KXP::Value item;
        TrackedUGC::CreateUGCJSONValue(ugc, item, allocator);
        array.PushBack(item, allocator);
    }
    return array;
}

}  // namespace

KXP::RetVal GetAppStats::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const auto game = KXP::jsonGetValue<std::string>(params, "appName");
        Tracker()->GetAppStats(game, videos_, screenshots_);
        return {};
    });
}

void GetAppStats::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    response.AddMember("screenshots", screenshots_, allocator);
    response.AddMember("videos", videos_, allocator);
}

KXP::RetVal GetAppUGC::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&] { return api().GetGameUGC(KXP::jsonGetValue<std::string>(params, "appName"), ugc_); });
}

void GetAppUGC::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    response.AddMember("ugc", ToArray(ugc_, allocator), allocator);
}

KXP::RetVal GetRecentUGC::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        (void)Tracker();
        if (api().GetRecentUGC(KXP::jsonGetValue<unsigned int>(params, "count"), recents_).Failed())
            return {KXP::Code::kFailure, "Failed to get recent UGC", 0};
        return {};
    });
}

void GetRecentUGC::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    if (!recents_.empty()) response.AddMember("recents", ToArray(recents_, allocator), allocator);
}
