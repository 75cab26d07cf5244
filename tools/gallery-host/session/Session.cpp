#include "gallery-host/session/Session.h"

#include <utility>

#include "gallery-host/base/Output.h"
#include "gallery-host/debug/Trace.h"
#include "gallery-host/message/Envelope.h"

namespace host {

Session::Session(SessionOptions options, Interrupt& interrupt)
    : options_(std::move(options)),
      timers_(options_.debug.timers),
      loader_(interrupt, options_.timeout, [this](const Event& event) { OnEvent(event); }) {}

void Session::Start() {
    {
        const Timers::Scope scope(timers_, "load");
        loader_.Load(options_.plugin);
    }
    const Timers::Scope scope(timers_, "start");
    loader_.Start();
}

ExitStatus Session::Stop() {
    const Timers::Scope scope(timers_, "stop");
    return loader_.Stop();
}

KXP::Document Session::Ask(const std::string& method, const KXP::Value& payload,
                           std::chrono::milliseconds extra) {
    const KXP::Document request = MakeRequest(method, payload);
    const std::string id = Text(request, "uniqueid");
    std::optional<KXP::Document> answer;
    const Listening listening = Listen([&answer, &id](KXP::Document& message, auto) {
        if (!IsPersistent(message) && Text(message, "reference_uniqueid") == id) answer = std::move(message);
    });
    const std::chrono::milliseconds patience = options_.timeout + extra;
    const Deadline deadline = std::chrono::steady_clock::now() + patience;
    const std::optional<std::string> refusal = Send(request);
    if (refusal) throw Failure(kExitFailed, "the plug-in refused the request: " + *refusal);
    while (!answer)
        if (Pump(deadline) == PluginLoader::Wake::kDeadline)
            throw Failure(kExitNoAnswer, "no answer to " + method + " within " + Seconds(patience));
    return std::move(*answer);
}

std::optional<std::string> Session::Send(const KXP::Document& envelope) {
    const std::string text = ToText(envelope);
    if (options_.debug.trace) TraceOut(text);
    timers_.OnSent(envelope);
    return loader_.Send(text);
}

void Session::Relay(MessageSocket& messages) {
    messages_ = &messages;
    loader_.Watch(messages.fd(), [this, &messages] {
        if (const std::optional<std::string> text = messages.Take()) RelayOne(*text);
    });
}

void Session::FinishRelay(Deadline deadline) {
    while (messages_ && (messages_->HasMore() || !relayed_.empty()))
        if (Pump(deadline) == PluginLoader::Wake::kDeadline) return;
}

void Session::RelayOne(const std::string& text) {
    KXP::Document envelope;
    std::string error;
    if (!ParseObject(text, envelope, error)) {
        Say("a child process sent a message that is " + error);
        return;
    }
    if (IsPersistent(envelope) && !IsResponse(envelope)) {
        Say("a child process sent a subscription, but cannot receive notifications");
        return;
    }
    // Its own identifier might be that of another request.
    const std::string id = NewUniqueId();
    SetText(envelope, "uniqueid", id);
    Complete(envelope);
    if (!IsResponse(envelope)) relayed_.insert(id);
    if (const std::optional<std::string> refusal = Send(envelope)) {
        relayed_.erase(id);
        Say("the plug-in refused a message of a child process: " + *refusal);
    }
}

void Session::OnEvent(const Event& event) {
    switch (event.code) {
        case ZvCefPluginJsonMessage:
            OnMessage(event);
            break;
        case ZvCefPluginLog:
            if (options_.showLog || (options_.debug.watcher && IsWatcherLine(event.text))) SayRaw(event.text);
            break;
        default:
            if (options_.debug.trace) TraceIn(event);
            break;
    }
}

void Session::OnMessage(const Event& event) {
    if (options_.debug.trace) TraceIn(event);
    KXP::Document message;
    std::string error;
    if (!ParseObject(event.text, message, error)) {
        Say("the plug-in sent a message that is " + error);
        return;
    }
    timers_.OnReceived(message, event.when);
    if (relayed_.erase(Text(message, "reference_uniqueid")) > 0) return;
    if (listener_) listener_(message, event.when);
}

}  // namespace host
