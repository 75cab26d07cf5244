#include "plugin-modules/Gallery/src/endpoints/UGCTasks.h"

#include <string_view>

#include "common/json/JsonHelpers.h"
#include "common/json/StackDocument.h"

namespace {

// An object with one member, the list. One record at a time is a document.
void WriteList(std::string_view member, const std::vector<TrackedUGC>& list, KXP::IJsonSink& sink) {
    KXP::StackDocument item;
    sink.StartObject();
    sink.Key(member);
    sink.StartArray();
    for (const TrackedUGC& ugc : list) {
        TrackedUGC::CreateUGCJSONValue(ugc, *item, (*item).GetAllocator());
        (*item).Accept(sink);
        item.Clear();
    }
    sink.EndArray(static_cast<rapidjson::SizeType>(list.size()));
    sink.EndObject(1);
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

void GetAppUGC::WriteAsync(KXP::IJsonSink& sink) {
    WriteList("ugc", ugc_, sink);
}

KXP::RetVal GetRecentUGC::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        (void)Tracker();
        if (api().GetRecentUGC(KXP::jsonGetValue<unsigned int>(params, "count"), recents_).Failed())
            return {KXP::Code::kFailure, "Failed to get recent UGC", 0};
        return {};
    });
}

void GetRecentUGC::WriteAsync(KXP::IJsonSink& sink) {
    if (recents_.empty()) return GalleryTaskBase::WriteAsync(sink);
    WriteList("recents", recents_, sink);
}
