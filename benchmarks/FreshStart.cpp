// Loads the plug-in that the first argument names and starts it, in a process with nothing else in it. Prints
// the libraries that are mapped after the load and after the start, the milliseconds of both together, and
// the resident memory in KiB. With a second argument it lists the libraries.
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <mutex>
#include <set>
#include <string>

#include <dlfcn.h>
#include <unistd.h>

#include "core/container/cef/ZvCefPlugin.h"

namespace {

std::mutex g_mutex;
std::condition_variable g_changed;
int g_commands = 0;

void Count(ZvCefPluginNotification_t notification, const char*, void*) {
    if (notification != ZvCefPluginCommandSucceeded) return;
    const std::lock_guard<std::mutex> lock(g_mutex);
    ++g_commands;
    g_changed.notify_all();
}

// Asleep, as a container is: a thread that looks all the time keeps the plug-in's own off its processor.
void WaitForCommand(int number) {
    std::unique_lock<std::mutex> lock(g_mutex);
    g_changed.wait(lock, [number] { return g_commands >= number; });
}

std::set<std::string> Libraries() {
    std::set<std::string> libraries;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        const size_t path = line.find('/');
        if (path != std::string::npos && line.find(".so", path) != std::string::npos)
            libraries.insert(line.substr(path));
    }
    return libraries;
}

long ResidentKib() {
    std::ifstream status("/proc/self/statm");
    long all = 0;
    long resident = 0;
    status >> all >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

}  // namespace

int main(int count, char** arguments) {
    using Clock = std::chrono::steady_clock;
    if (count < 2) return 2;
    const Clock::time_point begin = Clock::now();
    void* const library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (!library) return std::fprintf(stderr, "%s\n", dlerror()), 1;
    const std::chrono::duration<double, std::milli> load = Clock::now() - begin;
    const size_t atLoad = Libraries().size();

    const auto plugin = reinterpret_cast<ZvCefPluginGetInfoFn>(dlsym(library, "ZvCefPluginGetInfo"))();
    const Clock::time_point loaded = Clock::now();
    plugin->Initialize(&Count, "{}", nullptr);
    WaitForCommand(1);
    plugin->Start();
    WaitForCommand(2);
    const std::chrono::duration<double, std::milli> start = Clock::now() - loaded;
    const std::set<std::string> libraries = Libraries();
    std::printf("%zu %zu %.3f %ld\n", atLoad, libraries.size(), (load + start).count(), ResidentKib());
    if (count > 2)
        for (const std::string& path : libraries)
            std::puts(path.c_str());
    std::fflush(stdout);
    plugin->Stop();
    plugin->Uninitialize();
    return 0;
}
