#include "plugin-modules/Gallery/src/endpoints/HighlightRequests.h"

#include <set>
#include <utility>

#include "common/json/JsonHelpers.h"

namespace {

// The highlights of one game that a page asks for.
struct GroupQuery {
    std::string game;
    std::string group;
    uint32_t tags = 0;  // masks
    uint32_t significance = 0;
};

std::string GameOf(const KXP::Value& payload) {
    SDKAppInfo app;
    Highlight::ParseAppJSON(app, KXP::JSONGetObject(payload, "app"));
    return app.profileName;
}

GroupQuery ParseGroup(std::string game, const KXP::Value& group) {
    if (!group.IsObject()) throw KXP::JSONFieldError("A group is no object");
    return {std::move(game), KXP::jsonGetValueOrDefault<std::string>(group, "groupId", ""),
            KXP::jsonGetMaskOrZero(group, "tags"), KXP::jsonGetMaskOrZero(group, "significance")};
}

// Empty when there is no such group.
std::vector<TrackedUGC> HighlightsOf(const UGCTracker& tracker, const GroupQuery& query) {
    std::vector<TrackedUGC> found;
    if (tracker
            .GetFilteredHighlights(found, query.game, query.group, static_cast<int>(query.tags),
                                   static_cast<int>(query.significance))
            .Failed())
        found.clear();
    return found;
}

// When the page leaves out the message bus reference, the request's own identifier replaces it.
Highlight ParseHighlight(const KXP::JSONMessage& message) {
    const KXP::Value& payload = message.payload();
    const KXP::Value& sent = KXP::JSONGetObject(payload, "highlight");
    Highlight highlight;
    Highlight::ParseHighlightJSON(highlight, sent);
    if (KXP::jsonObjectHasKey(payload, "app", false)) {
        SDKAppInfo app;
        Highlight::ParseAppJSON(app, KXP::JSONGetObject(payload, "app"));
        highlight.SetSDKAppInfo(app);
    }
    if (KXP::jsonGetValueOrDefault<std::string>(sent, "messageBusReferenceId", "").empty())
        highlight.SetMessageBusRefid(message.uniqueid());
    return highlight;
}

}  // namespace

template <typename Body>
KXP::RetVal HighlightRequests::WithTracker(const KXP::JSONMessage& message, const Body& body) {
    api_.AssertOnWorker();
    return KXP::RunRequest([&]() -> KXP::RetVal {
        const std::shared_ptr<UGCTracker> tracker = api_.GetUGCTracker();
        if (!tracker) return kNoTracker;
        return body(*tracker, message.payload());
    });
}

KXP::RetVal HighlightRequests::EnqueuePendingHighlight(std::unique_ptr<KXP::JSONMessage> message,
                                                       KXP::Value& response, KXP::Allocator& allocator) {
    return WithTracker(*message, [&](UGCTracker& tracker, const KXP::Value&) -> KXP::RetVal {
        Highlight highlight = ParseHighlight(*message);
        tracker.EnqueuePendingHighlight(highlight);
        KXP::Value value;
        Highlight::CreateHighlightJSONValue(highlight, value, allocator);
        response.AddMember("highlight", value, allocator);
        return {};
    });
}

KXP::RetVal HighlightRequests::GetHighlightsCount(std::unique_ptr<KXP::JSONMessage> message,
                                                  KXP::Value& response, KXP::Allocator& allocator) {
    return WithTracker(*message, [&](UGCTracker& tracker, const KXP::Value& payload) -> KXP::RetVal {
        const GroupQuery query = ParseGroup(GameOf(payload), KXP::JSONGetObject(payload, "group"));
        const size_t count = HighlightsOf(tracker, query).size();
        response.AddMember("count", static_cast<uint64_t>(count), allocator);
        return {};
    });
}

KXP::RetVal HighlightRequests::DeleteGroupHighlights(std::unique_ptr<KXP::JSONMessage> message, KXP::Value&,
                                                     KXP::Allocator&) {
    return WithTracker(*message, [](UGCTracker& tracker, const KXP::Value& payload) -> KXP::RetVal {
        const auto group = KXP::jsonGetValue<std::string>(payload, "groupId");
        return tracker.DeleteTrackedHighlightGroup(group, GameOf(payload));
    });
}

KXP::RetVal HighlightRequests::OpenHighlightsGroupSummary(std::unique_ptr<KXP::JSONMessage> message,
                                                          KXP::Value&, KXP::Allocator&) {
    return WithTracker(*message, [&](UGCTracker& tracker, const KXP::Value& payload) -> KXP::RetVal {
        const std::string game = GameOf(payload);
        std::vector<TrackedUGC> summary;
        std::set<std::pair<int32_t, std::string>> seen;
        for (const KXP::Value& group : KXP::JSONGetArray(payload, "groups").GetArray()) {
            for (TrackedUGC& ugc : HighlightsOf(tracker, ParseGroup(game, group)))
                if (seen.emplace(ugc.id, ugc.path).second) summary.push_back(std::move(ugc));
        }
        api_.NotifyOpenSummary(std::move(summary));
        return {};
    });
}
