#include <fstream>

#include "gallery-host/doctor/WatchLimit.h"

size_t host::Platform::WatchLimit() {
    size_t limit = 0;
    std::ifstream("/proc/sys/fs/inotify/max_user_watches") >> limit;
    return limit;
}
