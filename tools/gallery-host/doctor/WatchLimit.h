#pragma once

#include <cstddef>

namespace host::Platform {

// How many folders one user may watch; 0 where there is no limit.
size_t WatchLimit();

}  // namespace host::Platform
