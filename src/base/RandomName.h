// Names that nobody can foresee.
#pragma once

#include <string>

namespace KXP {

// 16 hexadecimal digits, 64 random bits of the system's.
std::string RandomName();

}  // namespace KXP
