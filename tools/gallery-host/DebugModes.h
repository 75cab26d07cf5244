// The modes of -d: what helps to find out why something goes wrong.
#pragma once

#include <string>
#include <vector>

#include "gallery-host/EventQueue.h"

namespace host {

struct DebugModes {
    bool trace = false;
    bool keepTemp = false;
};

// The names as they stand on the command line, "list" among them.
std::vector<std::string> DebugModeNames();
// One line per mode, for people.
std::string DebugModeHelp();
// `names` come from DebugModeNames.
DebugModes ReadDebugModes(const std::vector<std::string>& names);

// One line on standard error: time, thread, "->" for a message to the plug-in or "<-" for one from it.
void TraceOut(const std::string& envelope);
void TraceIn(const Event& event);

}  // namespace host
