// The list of chapters in a movie's user data.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ovnxmedia {

// The user data of a clip that shows what lies between two times, in units of 100 ns: with the chapters that
// are in the clip, at its times, and all else as it was. `userData` is the content of a "udta".
std::string WithChaptersOf(std::string_view userData, uint64_t start, uint64_t end);

}  // namespace ovnxmedia
