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
#include <string>
#include <string_view>

#include "CobalixUtil.h"
#include "base/Words.h"

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

    void Send(const char* line) {
        LogCallback callback = nullptr;
        void* context = nullptr;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            callback = callback_;
            context = context_;
            if (callback) ++calls_;
        }
        if (!callback) {
            const std::string ended = std::string(line) + "\n";
            std::fwrite(ended.data(), 1, ended.size(), stderr);
            return;
        }
        ++callsOnThisThread;
        try {
            callback(line, context);
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

// The current second as text, which most lines of a thread share with the line before.
const char* SecondAsText(std::time_t second) {
    thread_local std::time_t known = -1;
    thread_local char text[32] = "";
    if (second != known) {
        std::tm utc{};
        gmtime_r(&second, &utc);
        std::strftime(text, sizeof text, "%FT%T", &utc);
        known = second;
    }
    return text;
}

// What stands before the message, cut where there is no room. Returns its length. By hand: each line has it.
size_t PutStart(char* text, size_t size, LogLevel level, const char* file, int line) {
    size_t length = 0;
    const auto put = [&](std::string_view part) { length += part.copy(text + length, size - 1 - length); };
    const auto putNumber = [&](int number) {
        char digits[12];
        const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        put({digits, static_cast<size_t>(end - digits)});
    };
    const auto now = std::chrono::system_clock::now();
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch());
    put("[");
    put(SecondAsText(std::chrono::system_clock::to_time_t(now)));
    // A leading 1 keeps the zeros after it.
    putNumber(static_cast<int>(1000 + sinceEpoch.count() % 1000));
    text[length - 4] = '.';
    put("Z][");
    putNumber(static_cast<int>(level));
    put("][");
    put(threadName);
    put("] ");
    put(file);
    put(":");
    putNumber(line);
    put(" ");
    return length;
}

bool IsControl(unsigned char c) {
    return (c < ' ' && c != '\t') || c == 0x7F;
}

// One line stays one line, and a terminal a terminal, whatever a file or a request is named.
void SendLine(char* line, size_t length) {
    size_t at = 0;
    for (; at + sizeof(Word) <= length; at += sizeof(Word)) {
        const Word word = LoadWord(line + at);
        if ((ZeroBytes(word & (kEachByte * 0xE0)) | BytesOf<0x7F>(word)) == 0) continue;
        std::replace_if(line + at, line + at + sizeof(Word), IsControl, ' ');
    }
    std::replace_if(line + at, line + length, IsControl, ' ');
    TheSink().Send(line);
}

KXP_PRINTF_FORMAT(4, 0)
void SendFormatted(LogLevel level, const char* file, int line, const char* format, va_list arguments,
                   va_list again) {
    // Enough for nearly all lines, which then need no memory.
    char text[1024];
    const size_t start = PutStart(text, sizeof text, level, file, line);
    int message = std::vsnprintf(text + start, sizeof text - start, format, arguments);
    // An argument that the C library cannot convert; the format alone still says what happened.
    if (message < 0) message = std::snprintf(text + start, sizeof text - start, "%s", format);
    const size_t length = start + static_cast<size_t>(std::max(message, 0));
    if (length < sizeof text) return SendLine(text, length);
    std::string whole(text, start);
    whole.resize(length + 1);
    std::vsnprintf(&whole[start], length + 1 - start, format, again);
    SendLine(whole.data(), length);
}

}  // namespace

void LogInit(Profile, LogCallback callback, void* context) {
    TheSink().Set(callback, context);
}

void LogMessage(LogLevel level, const char* file, int line, const char* format, ...) {
    if (level > LevelInForce()) return;
    va_list arguments;
    va_list again;
    va_start(arguments, format);
    va_copy(again, arguments);
    try {
        SendFormatted(level, file, line, format, arguments, again);
    } catch (const std::exception&) {
        std::fputs("log line lost for want of memory\n", stderr);
    }
    va_end(again);
    va_end(arguments);
}

void LogNameThread(const char* prefix, const char* suffix) {
    std::snprintf(threadName, sizeof threadName, "%s%s%s", prefix ? prefix : "", suffix ? " " : "",
                  suffix ? suffix : "");
}

}  // namespace KXP
