// Sends messages to the plug-in, and receives its answers and notifications.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "common/json/Json.h"
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
    // `when` is when the plug-in sent the message.
    using MessageListener =
        std::function<void(KXP::Document& message, std::chrono::system_clock::time_point when)>;

    Session(SessionOptions options, Interrupt& interrupt);

    void Start();
    ExitStatus Stop();
    // Lifecycle commands in between, each with the plug-in's reason if it fails. After RunStop the plug-in
    // keeps messages until RunStart; RunRestart ends it and drops its subscriptions.
    std::optional<std::string> RunStop() { return loader_.RunStop(); }
    std::optional<std::string> RunStart() { return loader_.RunStart(); }
    std::optional<std::string> RunRestart() { return loader_.RunRestart(); }
    bool abandoned() const { return loader_.abandoned(); }
    const SessionOptions& options() const { return options_; }

    // Sends a request and waits for its answer, whatever its result, for the timeout and `extra`. Throws
    // Failure(kExitNoAnswer) when it does not come in time, and Failure(kExitFailed) when the plug-in refuses
    // the envelope.
    KXP::Document Ask(const std::string& method, const KXP::Value& payload,
                      std::chrono::milliseconds extra = {});

    // From now on, during calls of this class, hands the messages of child processes to the plug-in and drops
    // the answers. `messages` has to outlive this object.
    void Relay(MessageSocket& messages);
    // Waits until the plug-in has answered all messages of child processes so far: their last message may
    // come after the answer to the request that started them.
    void FinishRelay(Deadline deadline);

    // For callers that match answers themselves. Send returns the plug-in's error text if it refuses the
    // envelope. The listener receives each message, during calls of this class, while the result of Listen
    // lives: messages still come after a failure, when the objects that a listener uses may be gone.
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
    std::set<std::string> relayed_;  // identifiers of requests whose answers to drop
    MessageListener listener_;
    Timers timers_;
    PluginLoader loader_;
};

}  // namespace host
