#include "gallery-host/debug/DebugModes.h"

namespace host {
namespace {

struct Mode {
    const char* name;
    const char* help;
    bool DebugModes::*flag;  // null for "list"
};

constexpr Mode kModes[] = {
    {"list", "name these modes and exit", nullptr},
    {"trace", "print every envelope in and out, with its time and thread", &DebugModes::trace},
    {"timers",
     "print how long loading, starting, each request, each new capture's notification and stopping take",
     &DebugModes::timers},
    {"watcher", "print what the file watcher sees and reports", &DebugModes::watcher},
    {"keep-temp", "keep the temporary home of demo, as --keep does", &DebugModes::keepTemp},
};

}  // namespace

std::vector<std::string> DebugModeNames() {
    std::vector<std::string> names;
    for (const Mode& mode : kModes)
        names.emplace_back(mode.name);
    return names;
}

std::string DebugModeHelp() {
    std::string text = "Debugging modes for -d; what they print goes to standard error:\n";
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

}  // namespace host
