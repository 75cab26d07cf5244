#include "gallery-host/loader/PluginLoader.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <dlfcn.h>
#include <poll.h>
#include <unistd.h>

#include "gallery-host/base/Output.h"
#include "gallery-host/message/Envelope.h"

namespace host {
namespace {

constexpr int kAccepted = 2;

void OnNotification(ZvCefPluginNotification_t notification, const char* text, void* context) {
    try {
        static_cast<EventQueue*>(context)->Push(Event::Kind::kNotification, notification, text ? text : "");
    } catch (...) {
        // Out of memory on a thread of the plug-in, which cannot handle our exception.
        SayRaw("gallery-host: a notification was lost: out of memory");
    }
}

// The result in the response of a failed command, or the text itself.
std::string FailureText(const std::string& json) {
    KXP::Document response;
    std::string error;
    return ParseObject(json, response, error) ? ResultText(response) : json;
}

int MillisecondsUntil(Deadline deadline) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, INT_MAX));
}

}  // namespace

PluginLoader::PluginLoader(Interrupt& interrupt, std::chrono::milliseconds timeout, Listener listener)
    : interrupt_(interrupt), timeout_(timeout), listener_(std::move(listener)), entry_(events_) {}

void PluginLoader::Load(const std::string& path) {
    if (access(path.c_str(), R_OK) != 0)
        throw Failure(kExitNoPlugin, "cannot load the plug-in " + path + ": " + std::strerror(errno) +
                                         "; name another with --plugin PATH");
    const Returned opened = Call([this, path] { return Open(path); }, "loading the plug-in", kExitNoPlugin);
    if (opened.thrown)
        throw Failure(kExitNoPlugin, "cannot load the plug-in " + path + ": " + *opened.thrown);
    stage_ = Stage::kLoaded;
}

int PluginLoader::Open(const std::string& path) {
    library_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library_) throw std::runtime_error(dlerror());
    const auto getInfo = reinterpret_cast<ZvCefPluginGetInfoFn>(dlsym(library_, "ZvCefPluginGetInfo"));
    if (!getInfo) throw std::runtime_error("it does not export ZvCefPluginGetInfo");
    plugin_ = getInfo();
    if (!plugin_ || plugin_->version != 1) throw std::runtime_error("it is not of interface version 1");
    if (!plugin_->Initialize || !plugin_->Start || !plugin_->Stop || !plugin_->Uninitialize ||
        !plugin_->OnJsonMessage)
        throw std::runtime_error("its table of entry calls has empty slots");
    return 1;
}

void PluginLoader::Start() {
    auto failed = RunInitialize();
    if (failed) throw Failure(kExitNoPlugin, "the plug-in could not be initialized: " + Reason(*failed));
    failed = RunStart();
    if (failed) throw Failure(kExitNoPlugin, "the plug-in could not be started: " + Reason(*failed));
}

std::optional<std::string> PluginLoader::RunInitialize() {
    // A failed Initialize leaves an instance that only Uninitialize removes.
    stage_ = Stage::kInitialized;
    return RunCommand(
        "_CmdInit_", [this] { return plugin_->Initialize(OnNotification, "{}", &events_); },
        "Initialize of the plug-in", kExitNoPlugin);
}

std::optional<std::string> PluginLoader::RunStart() {
    stage_ = Stage::kStarted;
    return RunCommand(
        "_CmdStart_", [this] { return plugin_->Start(); }, "Start of the plug-in", kExitNoPlugin);
}

std::optional<std::string> PluginLoader::RunStop() {
    stage_ = Stage::kInitialized;
    return RunCommand(
        "_CmdStop_", [this] { return plugin_->Stop(); }, "Stop of the plug-in", kExitNoAnswer);
}

std::optional<std::string> PluginLoader::RunUninitialize() {
    stage_ = Stage::kLoaded;
    return Call([this] { return plugin_->Uninitialize(); }, "Uninitialize of the plug-in", kExitNoAnswer)
        .thrown;
}

std::optional<std::string> PluginLoader::RunRestart() {
    std::optional<std::string> failed;
    if (stage_ == Stage::kStarted) failed = RunStop();
    const std::optional<std::string> ended = RunUninitialize();
    std::optional<std::string> started = RunInitialize();
    if (!started) started = RunStart();
    if (started) return started;
    return ended ? ended : failed;
}

std::string PluginLoader::Reason(const std::string& failure) const {
    // The response of a failed command has no reason. The log line does, after its place in the code.
    const size_t place = lastFault_.find("] ", lastFault_.find("][1]["));
    if (place == std::string::npos) return failure;
    const size_t text = lastFault_.find(' ', place + 2);
    return text == std::string::npos ? failure : lastFault_.substr(text + 1);
}

std::optional<std::string> PluginLoader::Send(const std::string& json) {
    return Call([this, json] { return plugin_->OnJsonMessage(json.c_str()); }, "handing over a message",
                kExitNoAnswer)
        .thrown;
}

void PluginLoader::Watch(int descriptor, std::function<void()> onReadable) {
    watched_.descriptor = descriptor;
    watched_.onReadable = std::move(onReadable);
}

PluginLoader::Wake PluginLoader::Pump(Deadline deadline, int descriptor) {
    pollfd fds[] = {{interrupt_.fd(), POLLIN, 0},
                    {events_.fd(), POLLIN, 0},
                    {descriptor, POLLIN, 0},
                    {IsIdle() ? watched_.descriptor : -1, POLLIN, 0}};
    const int ready = poll(fds, 4, MillisecondsUntil(deadline));
    if (ready < 0 && errno != EINTR)
        throw Failure(kExitFailed, std::string("cannot wait: ") + std::strerror(errno));
    HeedInterrupt();
    while (const std::optional<Event> event = events_.Take()) {
        Dispatch(*event);
        HeedInterrupt();  // there may be many events, and large ones
    }
    if (ready > 0 && fds[3].revents && IsIdle()) watched_.onReadable();
    if (ready > 0 && fds[2].revents) return Wake::kDescriptor;
    return std::chrono::steady_clock::now() >= deadline ? Wake::kDeadline : Wake::kEvents;
}

void PluginLoader::HeedInterrupt() {
    if (!interrupt_.Take()) return;
    // The first interrupt leads to an orderly stop; it may also come during the stop.
    if (!stopping_ || interrupt_.taken() > 1) throw Failure(kExitInterrupted, "interrupted");
    stopStatus_ = kExitInterrupted;
}

ExitStatus PluginLoader::Stop() {
    stopping_ = true;
    try {
        StopInOrder();
    } catch (const Failure& failure) {
        Say(std::string(failure.what()) + "; leaving while the plug-in still runs");
        abandoned_ = true;
        stopStatus_ = failure.status();
    }
    return stopStatus_;
}

void PluginLoader::StopInOrder() {
    // 1. After an interrupt a call or a command may still run; nothing may overlap it.
    Await([this] { return !busy_ && command_.running.empty(); }, "the plug-in's last command", kExitNoAnswer);
    // 2. End only what was started; go on after a failure.
    if (stage_ == Stage::kStarted) {
        if (const auto failed = RunStop()) {
            Say("the plug-in did not stop well: " + *failed);
            stopStatus_ = kExitFailed;
        }
    }
    if (stage_ >= Stage::kInitialized) {
        if (const auto failed = RunUninitialize()) {
            Say("the plug-in did not end well: " + *failed);
            stopStatus_ = kExitFailed;
        }
    }
    // 3. Unload on the thread that loaded it, because static objects may depend on the thread.
    if (library_) Call([this] { return dlclose(library_); }, "unloading the plug-in", kExitNoAnswer);
    library_ = nullptr;
    stage_ = Stage::kEmpty;
}

PluginLoader::Returned PluginLoader::Call(std::function<int()> call, const std::string& name,
                                          ExitStatus late) {
    // After an interrupt a call may still run.
    Await([this] { return !busy_; }, name, late);
    busy_ = true;
    entry_.Post(std::move(call));
    Await([this] { return !busy_; }, name, late);
    return returned_;
}

std::optional<std::string> PluginLoader::RunCommand(const std::string& method, std::function<int()> call,
                                                    const std::string& name, ExitStatus late) {
    command_.running = method;
    command_.failure.reset();
    const Returned returned = Call(std::move(call), name, late);
    if (returned.thrown) return returned.thrown;
    Await([this] { return command_.running.empty(); }, name, late);
    if (command_.failure) return command_.failure;
    if (returned.code != 1 && returned.code != kAccepted)
        return name + " returned " + std::to_string(returned.code);
    return std::nullopt;
}

void PluginLoader::Await(const std::function<bool()>& done, const std::string& what, ExitStatus late) {
    const Deadline deadline = std::chrono::steady_clock::now() + timeout_;
    while (!done())
        if (Pump(deadline) == Wake::kDeadline)
            throw Failure(late, what + " did not end within " + Seconds(timeout_));
}

void PluginLoader::Dispatch(const Event& event) {
    if (event.kind != Event::Kind::kNotification) {
        busy_ = false;
        returned_ = {event.code, std::nullopt};
        if (event.kind == Event::Kind::kThrew) returned_.thrown = event.text;
        // Only an accepted command goes on after its call.
        if (returned_.thrown || event.code != kAccepted) command_.running.clear();
    } else if (event.code == ZvCefPluginCommandSucceeded) {
        if (std::string_view(event.text) == command_.running) command_.running.clear();
    } else if (event.code == ZvCefPluginCommandFailed) {
        if (command_.running.empty()) return;
        command_.running.clear();
        command_.failure = FailureText(std::string(event.text));
    } else {
        if (event.code == ZvCefPluginLog && event.text.find("][1][") != std::string::npos)
            lastFault_ = event.text;
        listener_(event);
    }
}

}  // namespace host
