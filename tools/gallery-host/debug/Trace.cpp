#include "gallery-host/debug/Trace.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "common/system/System.h"
#include "core/container/cef/ZvCefPlugin.h"
#include "gallery-host/base/Output.h"

namespace host {
namespace {

void TraceLine(std::chrono::system_clock::time_point when, uint64_t thread, const char* what,
               std::string_view text) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(when);
    const auto ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(when.time_since_epoch()).count() % 1000;
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char head[80];
    const size_t length = std::strftime(head, sizeof head, "%T", &utc);
    std::snprintf(head + length, sizeof head - length, ".%03dZ thread %llu %s ", static_cast<int>(ms),
                  static_cast<unsigned long long>(thread), what);
    SayRaw(std::string(head).append(text));
}

}  // namespace

void TraceOut(const std::string& envelope) {
    TraceLine(std::chrono::system_clock::now(), KXP::Platform::ThreadNumber(), "->", envelope);
}

void TraceIn(const Event& event) {
    const bool message = event.code == ZvCefPluginJsonMessage;
    TraceLine(event.when, event.thread, message ? "<-" : "<- (event)", event.text);
}

bool IsWatcherLine(std::string_view line) {
    // "[time][level][thread] place text": a file may have any name, so only the head counts.
    const std::string_view head = line.substr(0, line.find("] "));
    constexpr std::string_view kThread = "][Gallery FILE";
    return head.size() >= kThread.size() && head.substr(head.size() - kThread.size()) == kThread;
}

void LogWatcherEvents() {
    setenv("COBALIX_LOG_LEVEL", "4", 0);
}

}  // namespace host
