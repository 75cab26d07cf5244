#include "gallery-host/DebugModes.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include <sys/syscall.h>
#include <unistd.h>

#include "core/container/cef/ZvCefPlugin.h"
#include "gallery-host/Output.h"

namespace host {
namespace {

struct Mode {
    const char* name;
    const char* help;
    bool DebugModes::*flag;  // null for "list"
};

constexpr Mode kModes[] = {
    {"list", "name these modes and leave", nullptr},
    {"trace", "every envelope in and out on standard error, with time and thread", &DebugModes::trace},
    {"keep-temp", "keep the temporary home of demo, as --keep does", &DebugModes::keepTemp},
};

void TraceLine(std::chrono::system_clock::time_point when, pid_t thread, const char* what,
               const std::string& text) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(when);
    const auto ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(when.time_since_epoch()).count() % 1000;
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char head[80];
    const size_t length = std::strftime(head, sizeof head, "%T", &utc);
    std::snprintf(head + length, sizeof head - length, ".%03dZ thread %d %s ", static_cast<int>(ms), thread,
                  what);
    SayRaw(head + text);
}

}  // namespace

std::vector<std::string> DebugModeNames() {
    std::vector<std::string> names;
    for (const Mode& mode : kModes)
        names.emplace_back(mode.name);
    return names;
}

std::string DebugModeHelp() {
    std::string text = "debugging modes for -d:\n";
    for (const Mode& mode : kModes) {
        const std::string name = mode.name;
        text += "  " + name + std::string(12 - name.size(), ' ') + mode.help + "\n";
    }
    return text;
}

DebugModes ReadDebugModes(const std::vector<std::string>& names) {
    DebugModes modes;
    for (const Mode& mode : kModes)
        for (const std::string& name : names)
            if (mode.flag && name == mode.name) modes.*mode.flag = true;
    return modes;
}

void TraceOut(const std::string& envelope) {
    TraceLine(std::chrono::system_clock::now(), static_cast<pid_t>(syscall(SYS_gettid)), "->", envelope);
}

void TraceIn(const Event& event) {
    const bool message = event.code == ZvCefPluginJsonMessage;
    TraceLine(event.when, event.thread, message ? "<-" : "<- (event)", event.text);
}

}  // namespace host
