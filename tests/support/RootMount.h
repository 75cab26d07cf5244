// Whether the system shows where "/" is mounted: in a plain chroot, as packages are built in, it does not.
#pragma once

#include <fstream>
#include <sstream>
#include <string>

inline bool ShowsRootMount() {
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line, word; std::getline(mounts, line);) {
        std::istringstream words(line);
        for (int i = 0; i < 5; ++i)
            words >> word;
        if (word == "/") return true;
    }
    return false;
}
