#include "plugin-modules/Gallery/src/endpoints/GetEventData.h"

#include "common/threads/Turns.h"
#include "plugin-modules/Gallery/src/activity/EdgeLogs.h"

namespace {

// Empty when the folder cannot be created, for instance because its drive was unplugged.
std::string GalleryPathOf(ZvGalleryAPI& api) {
    try {
        return api.GetGalleryPath();
    } catch (const std::exception&) {
        return "";
    }
}

}  // namespace

KXP::RetVal GetEventData::ExecuteAsync(const KXP::Value&) {
    // One request at a time: the logs may take much memory.
    static KXP::Turns reading;
    const KXP::Turn turn(reading, "");
    recents_.clear();
    const std::string gallery = GalleryPathOf(api());
    if (gallery.empty()) return {KXP::Code::kFailure, "Failed to get User Gallery Path", 0};
    if (!ParseEdgeLogs(recents_, gallery)) return {KXP::Code::kFailure, "Failed to get Edge events", 0};
    return {};
}

void GetEventData::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    if (recents_.empty()) return;
    KXP::Value list(rapidjson::kArrayType);
    for (const ActivityData& data : recents_) {
        KXP::Value item;
        ActivityData::CreateActivityJSONValue(data, item, allocator);
        list.PushBack(item, allocator);
    }
    response.AddMember("recents", list, allocator);
}
