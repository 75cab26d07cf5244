// The modes of -d: what helps to find out why something goes wrong.
#pragma once

#include <string>
#include <vector>

namespace host {

struct DebugModes {
    bool trace = false;
    bool timers = false;
    bool watcher = false;
    bool keepTemp = false;
};

// The names as they stand on the command line, "list" among them.
std::vector<std::string> DebugModeNames();
// One line per mode, for people.
std::string DebugModeHelp();
// `names` come from DebugModeNames.
DebugModes ReadDebugModes(const std::vector<std::string>& names);

}  // namespace host
