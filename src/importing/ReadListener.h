// How an import says how far it is.
#pragma once

#include <cstdint>
#include <functional>

namespace importing {

// Called with the number of bytes that were read since the last call, often none. What it throws ends the
// work.
using ReadListener = std::function<void(uint64_t bytes)>;

}  // namespace importing
