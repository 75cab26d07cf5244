// Times as text.
#pragma once

#include <cstdint>
#include <string>

namespace KXP {

// UTC with milliseconds, for example "2021-03-07T14:05:09.042Z", from milliseconds since 1970; empty for a
// time beyond the calendar.
std::string GetISO8601TimeFromMs(uint64_t milliseconds);

// The modification time in UTC without milliseconds, "2021-03-07T14:05:09Z". Returns a code of RetVal.h:
// 0, or 0x80070002 when there is no such file or its time is beyond the calendar.
int FileDate(const std::string& path, std::string& date);

}  // namespace KXP
