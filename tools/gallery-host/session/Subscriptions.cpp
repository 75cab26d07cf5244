#include "gallery-host/session/Subscriptions.h"

#include <optional>

#include "gallery-host/base/Output.h"
#include "gallery-host/message/Envelope.h"

namespace host {

void Subscriptions::Make(Session& session) {
    for (const std::string& method : NotificationMethods()) {
        const KXP::Document request = MakeRequest(method, KXP::Value(rapidjson::kObjectType), kPersistent);
        // A notification may come before Send returns.
        ids_[method] = Text(request, "uniqueid");
        const std::optional<std::string> refusal = session.Send(request);
        if (refusal) Say("the plug-in refused the subscription to " + method + ": " + *refusal);
    }
}

bool Subscriptions::Match(const KXP::Document& message) const {
    const auto ours = ids_.find(Text(message, "method"));
    return IsNotification(message) && ours != ids_.end() &&
           ours->second == Text(message, "reference_uniqueid");
}

}  // namespace host
