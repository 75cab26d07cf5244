// How far the memory of this process rises in a piece of work.
#pragma once

#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>

#include <malloc.h>

namespace benchmarks {

// A line of the process's status, in MiB.
inline double StatusLine(const char* name) {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);)
        if (line.rfind(name, 0) == 0) return std::stod(line.substr(std::strlen(name))) / 1024;
    throw std::runtime_error(name);
}

// In MiB, above what is in use before.
template <typename Work>
double PeakOf(Work work) {
    malloc_trim(0);  // of what was made before
    std::ofstream("/proc/self/clear_refs") << 5;
    const double before = StatusLine("VmRSS:");
    work();
    return StatusLine("VmHWM:") - before;
}

}  // namespace benchmarks
