// The lines of -d trace and -d watcher.
#pragma once

#include <string>
#include <string_view>

#include "gallery-host/loader/EventQueue.h"

namespace host {

// One line on standard error: time, thread, "->" for a message to the plug-in or "<-" for one from it.
void TraceOut(const std::string& envelope);
void TraceIn(const Event& event);

// Whether the thread of the file watcher wrote this log line.
bool IsWatcherLine(std::string_view line);
// Makes the plug-in log each file event, unless the environment already sets a level. Call it before there
// are threads, because the environment has no lock.
void LogWatcherEvents();

}  // namespace host
