#include "common/TimeUtil.h"

#include <cstdio>
#include <ctime>

#include <sys/stat.h>

#include "common/RetVal.h"

namespace KXP {
namespace {

// "2021-03-07T14:05:09"; empty for a time beyond the calendar.
std::string SecondsToText(std::time_t seconds) {
    std::tm utc{};
    if (!gmtime_r(&seconds, &utc)) return "";
    char text[64];
    return {text, std::strftime(text, sizeof text, "%FT%H:%M:%S", &utc)};
}

}  // namespace

std::string GetISO8601TimeFromMs(uint64_t milliseconds) {
    const std::string seconds = SecondsToText(static_cast<std::time_t>(milliseconds / 1000));
    if (seconds.empty()) return "";
    char fraction[8];
    std::snprintf(fraction, sizeof fraction, ".%03uZ", static_cast<unsigned>(milliseconds % 1000));
    return seconds + fraction;
}

int FileDate(const std::string& path, std::string& date) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return Code::kNotFound;
    // Going through local time can move a time in the hour that a zone repeats; the records that this date is
    // compared with were made the same way.
    std::tm local{};
    if (!localtime_r(&status.st_mtime, &local)) return Code::kNotFound;
    const std::string text = SecondsToText(std::mktime(&local));
    if (text.empty()) return Code::kNotFound;
    date = text + "Z";
    return Code::kOk;
}

}  // namespace KXP
