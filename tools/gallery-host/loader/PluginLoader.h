// Loads the plug-in, runs its life cycle, and limits the time of each call.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "core/container/cef/ZvCefPlugin.h"
#include "gallery-host/base/Deadline.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Interrupt.h"
#include "gallery-host/loader/EntryThread.h"
#include "gallery-host/loader/EventQueue.h"

namespace host {

// For one thread, on which it also calls `listener`.
class PluginLoader {
  public:
    // Receives messages, events and log lines: all notifications but those of the life cycle.
    using Listener = std::function<void(const Event&)>;
    enum class Wake { kEvents, kDescriptor, kDeadline };

    // `timeout` bounds each entry call and each lifecycle command.
    PluginLoader(Interrupt& interrupt, std::chrono::milliseconds timeout, Listener listener);
    // Only after Stop, and never if that abandoned the plug-in.
    ~PluginLoader() = default;

    // Load and start the library. Throw Failure(kExitNoPlugin) or Failure(kExitInterrupted); call Stop in
    // either case.
    void Load(const std::string& path);
    void Start();

    // Commands for a plug-in that was started. Each returns the reason if the plug-in fails it, and may throw
    // as Stop's calls do: Failure(kExitNoAnswer), Failure(kExitInterrupted).
    std::optional<std::string> RunStart();
    std::optional<std::string> RunStop();
    // Ends the plug-in, also when a part of that fails, and starts it again without unloading the library.
    std::optional<std::string> RunRestart();

    // Hands over one envelope. Returns the plug-in's error text if it refuses the envelope. Throws
    // Failure(kExitNoAnswer) when the call does not return, and Failure(kExitInterrupted).
    std::optional<std::string> Send(const std::string& json);

    // Waits for events, which it hands to the listener, for `descriptor` to be readable, or for the deadline;
    // may return early with kEvents. Throws Failure(kExitInterrupted).
    Wake Pump(Deadline deadline, int descriptor = -1);

    // From now on Pump calls `onReadable` while `descriptor` is readable and no call to the plug-in is
    // pending, so that `onReadable` may call Send.
    void Watch(int descriptor, std::function<void()> onReadable);

    // Stops, uninitializes and unloads what was started, and reports failures. If the plug-in does not end in
    // time, or at the second interrupt, it is abandoned: its threads still run, this object must not be
    // destroyed, and the process has to leave without cleaning up.
    ExitStatus Stop();
    bool abandoned() const { return abandoned_; }

  private:
    enum class Stage { kEmpty, kLoaded, kInitialized, kStarted };
    struct Returned {
        int code = 0;
        std::optional<std::string> thrown;
    };
    struct Watched {
        int descriptor = -1;
        std::function<void()> onReadable;
    };
    // The lifecycle command in progress, by its method, and how the last one failed.
    struct Command {
        std::string running;
        std::optional<std::string> failure;
    };

    int Open(const std::string& path);
    Returned Call(std::function<int()> call, const std::string& name, ExitStatus late);
    // Runs a lifecycle command to its end; the text of its failure, if it failed.
    std::optional<std::string> RunCommand(const std::string& method, std::function<int()> call,
                                          const std::string& name, ExitStatus late);
    std::optional<std::string> RunInitialize();
    std::optional<std::string> RunUninitialize();
    void StopInOrder();
    void HeedInterrupt();
    bool IsIdle() const { return stage_ == Stage::kStarted && command_.running.empty() && !busy_; }
    std::string Reason(const std::string& failure) const;
    void Await(const std::function<bool()>& done, const std::string& what, ExitStatus late);
    void Dispatch(const Event& event);

    Interrupt& interrupt_;
    const std::chrono::milliseconds timeout_;
    const Listener listener_;
    Watched watched_;

    Stage stage_ = Stage::kEmpty;
    void* library_ = nullptr;
    ZvCefPluginInfo* plugin_ = nullptr;
    bool busy_ = false;  // an entry call is pending
    Returned returned_;
    Command command_;
    std::string lastFault_;  // the latest log line of a failure
    bool stopping_ = false;
    ExitStatus stopStatus_ = kExitSuccess;
    bool abandoned_ = false;

    EventQueue events_;
    EntryThread entry_;  // last: its calls use all of the above
};

}  // namespace host
