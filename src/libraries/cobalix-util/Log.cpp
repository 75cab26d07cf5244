#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <new>

#include "CobalixUtil.h"

namespace KXP {
namespace {

constexpr int kDefaultLevel = 3;

int LevelFromEnvironment() {
    const char* text = std::getenv("COBALIX_LOG_LEVEL");
    int level = kDefaultLevel;
    if (text) std::from_chars(text, text + std::strlen(text), level);
    return level;
}

int LevelInForce() {
    static const int level = LevelFromEnvironment();
    return level;
}

// Plain bytes: an object with a destructor would keep the library mapped for as long as the container's own
// thread lives. Longer names are cut; they may come from a message.
constexpr size_t kMaxThreadName = 96;
thread_local char threadName[kMaxThreadName] = "";
// How deep this thread is inside the callback: a callback that replaces itself must not wait for itself.
thread_local int callsOnThisThread = 0;

// Where lines go. Calls run outside the mutex, so that a callback may log; a count of them lets Set wait
// until the callback that it replaces is left.
class Sink {
  public:
    void Set(LogCallback callback, void* context) {
        std::unique_lock<std::mutex> lock(mutex_);
        callback_ = callback;
        context_ = context;
        idle_.wait(lock, [this] { return calls_ <= callsOnThisThread; });
    }

    void Send(const std::string& line) {
        LogCallback callback = nullptr;
        void* context = nullptr;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            callback = callback_;
            context = context_;
            if (callback) ++calls_;
        }
        if (!callback) {
            const std::string ended = line + "\n";
            std::fwrite(ended.data(), 1, ended.size(), stderr);
            return;
        }
        ++callsOnThisThread;
        try {
            callback(line.c_str(), context);
        } catch (...) {
            std::fputs("log callback threw\n", stderr);
        }
        --callsOnThisThread;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            --calls_;
        }
        idle_.notify_all();
    }

  private:
    std::mutex mutex_;
    std::condition_variable idle_;
    int calls_ = 0;
    LogCallback callback_ = nullptr;
    void* context_ = nullptr;
};

// Never destroyed, because threads that outlive the library's static objects may still log; and in no memory
// of its own, which would be lost when the library is unloaded.
Sink& TheSink() {
    alignas(Sink) static unsigned char place[sizeof(Sink)];
    static Sink& sink = *new (place) Sink;
    return sink;
}

std::string TimeNow() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto sinceEpoch = now.time_since_epoch();
    const int ms =
        static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count() % 1000);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char text[40];
    const size_t length = std::strftime(text, sizeof text, "%FT%T", &utc);
    std::snprintf(text + length, sizeof text - length, ".%03dZ", ms);
    return text;
}

KXP_PRINTF_FORMAT(1, 0)
std::string FormatText(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    char text[512];
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    std::string result;
    if (length < 0) {
        // An argument that the C library cannot convert; the format alone still says what happened.
        result = format;
    } else if (static_cast<size_t>(length) < sizeof text) {
        result.assign(text, static_cast<size_t>(length));
    } else {
        result.resize(static_cast<size_t>(length) + 1);
        std::vsnprintf(result.data(), result.size(), format, again);
        result.resize(static_cast<size_t>(length));
    }
    va_end(again);
    return result;
}

}  // namespace

void LogInit(Profile, LogCallback callback, void* context) {
    TheSink().Set(callback, context);
}

void LogMessage(LogLevel level, const char* file, int line, const char* format, ...) {
    if (level > LevelInForce()) return;
    va_list arguments;
    va_start(arguments, format);
    try {
        std::string text = "[" + TimeNow() + "][" + std::to_string(level) + "][" + threadName + "] " + file +
                           ":" + std::to_string(line) + " " + FormatText(format, arguments);
        // One line stays one line, and a terminal a terminal, whatever a file or a request is named.
        std::replace_if(
            text.begin(), text.end(), [](unsigned char c) { return (c < ' ' && c != '\t') || c == 0x7F; },
            ' ');
        TheSink().Send(text);
    } catch (const std::exception&) {
        std::fputs("log line lost for want of memory\n", stderr);
    }
    va_end(arguments);
}

void LogNameThread(const char* prefix, const char* suffix) {
    std::snprintf(threadName, sizeof threadName, "%s%s%s", prefix ? prefix : "", suffix ? " " : "",
                  suffix ? suffix : "");
}

}  // namespace KXP
