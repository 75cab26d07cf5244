// The plug-in as a shared library: opening it, its life cycle, and a time limit on everything it is asked.
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

// For one thread, which is also the one that `listener` is called on.
class PluginLoader {
  public:
    // Gets the notifications that are not the life cycle's: messages, events and log lines.
    using Listener = std::function<void(const Event&)>;
    enum class Wake { kEvents, kDescriptor, kDeadline };

    // `timeout` bounds each entry call and each lifecycle command.
    PluginLoader(Interrupt& interrupt, std::chrono::milliseconds timeout, Listener listener);
    // After Stop; never when that abandoned the plug-in.
    ~PluginLoader() = default;

    // Open and start the library. Throw Failure(kExitNoPlugin) when that does not work, and
    // Failure(kExitInterrupted); Stop is due in either case.
    void Load(const std::string& path);
    void Start();

    // Hands one envelope over. Gives the plug-in's words when it refuses the text. Throws
    // Failure(kExitNoAnswer) when the call does not come back, and Failure(kExitInterrupted).
    std::optional<std::string> Send(const std::string& json);

    // Waits for events and hands them to the listener, or for `descriptor` to be readable, or for the
    // deadline; may come back early with kEvents. Throws Failure(kExitInterrupted).
    Wake Pump(Deadline deadline, int descriptor = -1);

    // From now on Pump calls `onReadable` while there is something to read, but only when nothing else is
    // asked of the plug-in, so that it may call Send.
    void Watch(int descriptor, std::function<void()> onReadable);

    // Stops, uninitializes and closes, as far as things have got, and says what goes wrong. When the plug-in
    // does not come to an end in time, or at the second interrupt, it is abandoned: its threads still run,
    // this object must not be destroyed, and the process has to leave without cleaning up.
    ExitStatus Stop();
    bool abandoned() const { return abandoned_; }

  private:
    enum class Stage { kEmpty, kLoaded, kInitialized, kStarted };
    struct Returned {
        int code = 0;
        std::optional<std::string> thrown;
    };

    int Open(const std::string& path);
    Returned Call(std::function<int()> call, const std::string& name, ExitStatus late);
    // Runs a lifecycle command to its end; the text of its failure, if it failed.
    std::optional<std::string> RunCommand(const std::string& method, std::function<int()> call,
                                          const std::string& name, ExitStatus late);
    void StopInOrder();
    void HeedInterrupt();
    bool IsIdle() const { return stage_ == Stage::kStarted && running_.empty() && !busy_; }
    std::string Reason(const std::string& failure) const;
    void Await(const std::function<bool()>& done, const std::string& what, ExitStatus late);
    void Dispatch(const Event& event);

    Interrupt& interrupt_;
    const std::chrono::milliseconds timeout_;
    const Listener listener_;
    int watched_ = -1;
    std::function<void()> onReadable_;

    Stage stage_ = Stage::kEmpty;
    void* library_ = nullptr;
    ZvCefPluginInfo* plugin_ = nullptr;
    bool busy_ = false;  // an entry call is out
    Returned returned_;
    std::string running_;  // the method of the lifecycle command that has not ended
    std::optional<std::string> commandFailure_;
    std::string lastFault_;  // the newest log line that tells of a failure
    bool stopping_ = false;
    ExitStatus stopStatus_ = kExitSuccess;
    bool abandoned_ = false;

    EventQueue events_;
    EntryThread entry_;  // last: its calls use all of the above
};

}  // namespace host
