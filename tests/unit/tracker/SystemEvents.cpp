#include "tests/unit/tracker/FileWatcherTest.h"

std::vector<WayToWatch> WaysToWatch() {
    return {{"SystemEvents", false, true}};
}
