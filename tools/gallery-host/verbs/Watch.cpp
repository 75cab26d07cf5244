#include "gallery-host/verbs/Watch.h"

#include <chrono>
#include <ctime>
#include <string>

#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/NotificationText.h"
#include "gallery-host/session/Subscriptions.h"

namespace host {
namespace {

using Time = std::chrono::system_clock::time_point;

// The payload, even if it is not an object.
const KXP::Value& RawPayload(const KXP::Document& message) {
    const KXP::Value* payload = Find(message, "payload");
    return payload ? *payload : Payload(message);
}

std::string TextLine(const KXP::Document& message, Time when) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(when);
    std::tm local{};
    localtime_r(&seconds, &local);
    char head[16];
    const size_t length = std::strftime(head, sizeof head, "%T  ", &local);
    return std::string(head, length) + NotificationText(Text(message, "method"), RawPayload(message)) + "\n";
}

std::string JsonLine(const KXP::Document& message) {
    KXP::Document line(rapidjson::kObjectType);
    KXP::Allocator& allocator = line.GetAllocator();
    line.AddMember("notification", KXP::Value(Text(message, "method"), allocator), allocator);
    line.AddMember("payload", KXP::Value(RawPayload(message), allocator), allocator);
    return PrintableJson(ToText(line)) + "\n";
}

}  // namespace

void RunWatch(Session& session, Output& output, const WatchOptions& options) {
    bool done = false;
    uint64_t seen = 0;
    const Session::Listening listening = session.Listen([&](KXP::Document& message, Time when) {
        if (done || !IsNotification(message)) return;
        const bool open = output.Write(options.json ? JsonLine(message) : TextLine(message, when));
        done = !open || ++seen == options.count;
    });
    Subscriptions().Make(session);
    Say("watching; Ctrl-C ends");
    try {
        while (!done)
            session.Pump(Deadline::max());
    } catch (const Failure& failure) {
        if (failure.status() != kExitInterrupted || options.count > 0) throw;
    }
}

}  // namespace host
