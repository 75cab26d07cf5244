#include "common/text/TimeUtil.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "base/FileCalls.h"
#include "common/results/RetVal.h"

namespace KXP {
namespace {

template <typename Unit, typename Clock>
auto CountNow() {
    return std::chrono::duration_cast<Unit>(Clock::now().time_since_epoch()).count();
}

// "2021-03-07T14:05:09"; empty for a time beyond the calendar.
std::string SecondsToText(std::time_t seconds) {
    std::tm utc{};
    if (!gmtime_r(&seconds, &utc)) return "";
    // Not strftime, which looks at the file of the time zone each time.
    char text[64];
    const int size = std::snprintf(text, sizeof text, "%lld-%02d-%02dT%02d:%02d:%02d", 1900LL + utc.tm_year,
                                   utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
    return {text, static_cast<size_t>(size)};
}

// Takes one to `mostDigits` digits and the mark after them, '\0' for the end of the text.
bool TakeNumber(const char*& text, int mostDigits, char mark, int64_t& number) {
    const char* const begin = text;
    for (number = 0; *text >= '0' && *text <= '9' && text - begin < mostDigits; ++text)
        number = number * 10 + (*text - '0');
    return text != begin && *text++ == mark;
}

// Whether the zone's distance from UTC changes within a day of the time.
bool IsNearChange(std::time_t seconds) {
    constexpr std::time_t day = 86400;
    std::tm local{};
    std::tm other{};
    if (!localtime_r(&seconds, &local)) return true;
    for (const std::time_t near : {seconds - day, seconds + day})
        if (!localtime_r(&near, &other) || other.tm_gmtoff != local.tm_gmtoff) return true;
    return false;
}

}  // namespace

uint64_t GetTime100ns() {
    return static_cast<uint64_t>(CountNow<std::chrono::nanoseconds, std::chrono::steady_clock>()) / 100;
}

int64_t GetSystemTimeMs() {
    return CountNow<std::chrono::microseconds, std::chrono::system_clock>() / 1000;
}

std::string GetISO8601Time() {
    return GetISO8601TimeFromMs(static_cast<uint64_t>(std::max<int64_t>(0, GetSystemTimeMs())));
}

std::string GetISO8601TimeFromMs(uint64_t milliseconds) {
    const std::string seconds = SecondsToText(static_cast<std::time_t>(milliseconds / 1000));
    if (seconds.empty()) return "";
    char fraction[8];
    std::snprintf(fraction, sizeof fraction, ".%03uZ", static_cast<unsigned>(milliseconds % 1000));
    return seconds + fraction;
}

std::string GetCurrentLocalTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (!localtime_r(&now, &local)) return "";
    char text[128];
    std::snprintf(text, sizeof text, "%d.%d.%d-%d.%d.%d.", local.tm_year + 1900, local.tm_mon + 1,
                  local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    return text;
}

int64_t HHMMSSTimeTo100ns(const char* text) {
    if (!text || !*text) {
        KXP_LOG(LogFailure, "%s : Invalid ts string", "HHMMSSTimeTo100ns");
        return 0;
    }
    int64_t hours = 0;
    int64_t minutes = 0;
    int64_t seconds = 0;
    int64_t milliseconds = 0;
    const char* rest = text;
    if (!TakeNumber(rest, 2, ':', hours) || !TakeNumber(rest, 2, ':', minutes) ||
        !TakeNumber(rest, 2, '.', seconds) || !TakeNumber(rest, 3, '\0', milliseconds)) {
        KXP_LOG(LogFailure, "%s : Malformed ts string `%s`", "HHMMSSTimeTo100ns", text);
        return 0;
    }
    return (hours * 3600000 + minutes * 60000 + seconds * 1000 + milliseconds) * 10000;
}

int FileDate(const std::string& path, std::string& date) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return Code::kNotFound;
    return FileDate(status, date);
}

int FileDate(const struct stat& status, std::string& date) {
    // Going through local time can move a time in the hour that a zone repeats; the records that this date is
    // compared with were made the same way. At all other times mktime, which looks at the file of the time
    // zone each time, would return the same.
    std::time_t seconds = status.st_mtime;
    if (IsNearChange(seconds)) {
        std::tm local{};
        if (!localtime_r(&status.st_mtime, &local)) return Code::kNotFound;
        seconds = std::mktime(&local);
    }
    const std::string text = SecondsToText(seconds);
    if (text.empty()) return Code::kNotFound;
    date = text + "Z";
    return Code::kOk;
}

int MilisecsFromFileCreation(const std::string& path, uint64_t& milliseconds) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        KXP_LOG(LogFailure, "File not Found");
        return Code::kNotFound;
    }
    // In double, because a file system may report any 64-bit number of seconds.
    const timespec time = Platform::ModifiedTime(status);
    const double modified = static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    const double age = std::max(0.0, static_cast<double>(GetSystemTimeMs()) - modified);
    milliseconds = static_cast<uint64_t>(std::min(age, 9e18));
    return Code::kOk;
}

}  // namespace KXP
