// A conversation with the plug-in: messages out, answers and notifications in.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "common/Json.h"
#include "gallery-host/debug/DebugModes.h"
#include "gallery-host/debug/Timers.h"
#include "gallery-host/loader/PluginLoader.h"
#include "gallery-host/message/MessageSocket.h"

namespace host {

struct SessionOptions {
    std::string plugin;  // path of the library
    std::chrono::milliseconds timeout{30000};
    bool showLog = false;  // the plug-in's log lines on standard error
    DebugModes debug;
};

// For one thread. Every call may throw Failure, see PluginLoader.
class Session {
  public:
    // `when` is the time at which the plug-in sent the message.
    using MessageListener =
        std::function<void(KXP::Document& message, std::chrono::system_clock::time_point when)>;

    Session(SessionOptions options, Interrupt& interrupt);

    void Start();
    ExitStatus Stop();
    bool abandoned() const { return loader_.abandoned(); }
    const SessionOptions& options() const { return options_; }

    // Sends a request and waits for its answer, a response of whatever result, `extra` longer than any may
    // take. Throws Failure(kExitNoAnswer) when it does not come in time, and Failure(kExitFailed) when the
    // plug-in refuses the envelope.
    KXP::Document Ask(const std::string& method, const KXP::Value& payload,
                      std::chrono::milliseconds extra = {});

    // From now on the plug-in gets what its child processes send, and their answers are dropped. During calls
    // of this class, which `messages` has to outlive.
    void Relay(MessageSocket& messages);
    // Until the plug-in has answered all that they have sent by now: the answer that their work was for may
    // have come ahead of it.
    void FinishRelay(Deadline deadline);

    // For callers that do their own matching. Send gives the plug-in's words when it refuses the envelope;
    // the listener gets every message, during calls of this class, for as long as the result of Listen lives:
    // messages still come after a failure, when what a listener uses may be gone.
    std::optional<std::string> Send(const KXP::Document& envelope);
    struct Unlisten {
        void operator()(Session* session) const { session->listener_ = nullptr; }
    };
    using Listening = std::unique_ptr<Session, Unlisten>;
    [[nodiscard]] Listening Listen(MessageListener listener) {
        listener_ = std::move(listener);
        return Listening(this);
    }
    PluginLoader::Wake Pump(Deadline deadline, int descriptor = -1) {
        return loader_.Pump(deadline, descriptor);
    }

  private:
    void OnEvent(const Event& event);
    void OnMessage(const Event& event);
    void RelayOne(const std::string& text);

    const SessionOptions options_;
    MessageSocket* messages_ = nullptr;
    std::set<std::string> relayed_;  // what the answers to drop refer to
    MessageListener listener_;
    Timers timers_;
    PluginLoader loader_;
};

}  // namespace host
