#include "gallery-host/page/Library.h"

#include <optional>
#include <utility>

#include "gallery-host/message/Envelope.h"

namespace host::page {

void Library::Ask(const std::string& method, const KXP::Value& payload, Done done) {
    const KXP::Document envelope = MakeRequest(method, payload);
    const std::string id = Text(envelope, "uniqueid");
    // The answer may come before Send returns.
    asked_[id] = std::move(done);
    const std::optional<std::string> refusal = session_.Send(envelope);
    if (!refusal) return;
    const auto node = asked_.extract(id);
    if (!node.empty()) node.mapped()(nullptr, *refusal);
}

void Library::Take(KXP::Document& message) {
    const auto node = asked_.extract(Text(message, "reference_uniqueid"));
    if (!node.empty()) node.mapped()(&message, {});
}

}  // namespace host::page
