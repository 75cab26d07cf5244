// Clocks and times as text. Results named "code" are those of RetVal.h. A time beyond the calendar becomes an
// empty text.
#pragma once

#include <cstdint>
#include <string>

struct stat;

namespace KXP {

// The monotonic clock, in units of 100 ns.
uint64_t GetTime100ns();

// The wall clock, in milliseconds since 1970.
int64_t GetSystemTimeMs();

// UTC with milliseconds, for example "2021-03-07T14:05:09.042Z": the time now, or one in milliseconds since
// 1970.
std::string GetISO8601Time();
std::string GetISO8601TimeFromMs(uint64_t milliseconds);

// Local time for file names, without padding and with a dot at the end: "2021.3.7-14.5.9."
std::string GetCurrentLocalTime();

// "1:02:03.4" in units of 100 ns. The digits after the dot count whole milliseconds, so ".5" is 5 ms. 0 and a
// log line for anything else, null included.
int64_t HHMMSSTimeTo100ns(const char* text);

// The modification time in UTC without milliseconds, "2021-03-07T14:05:09Z". Returns a code: 0, or 0x80070002
// when there is no such file or its time is beyond the calendar.
int FileDate(const std::string& path, std::string& date);
int FileDate(const struct stat& status, std::string& date);

// Milliseconds since the last modification, despite the name; 0 for a file from the future. Returns a code.
int MilisecsFromFileCreation(const std::string& path, uint64_t& milliseconds);

}  // namespace KXP
