// What a test of the tracker replaces.
#pragma once

#include <chrono>

#include "common/task/Clock.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"

struct TrackerParts {
    KXP::Clock& clock = KXP::Clock::Steady();
    bool startWorker = true;  // without it the test calls queue().Step()
    bool watch = true;
    WatcherOptions watcher;  // except its gallery, which is always the host's
    // If summing up the gallery's tree takes longer, the host is notified of captures before it.
    std::chrono::milliseconds sumInPassing{5};
};
