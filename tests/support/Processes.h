// What runs and is open, from /proc.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

inline bool IsAlive(const std::string& pid) {
    std::ifstream stat("/proc/" + pid + "/stat");
    std::string number, name, state;
    return stat >> number >> name >> state && state != "Z" && state != "X";
}

inline size_t CountIn(const char* folder) {
    const std::filesystem::directory_iterator all(folder);
    return static_cast<size_t>(std::distance(begin(all), end(all)));
}
inline size_t OpenDescriptors() {
    return CountIn("/proc/self/fd");
}
inline size_t RunningThreads() {
    return CountIn("/proc/self/task");
}
