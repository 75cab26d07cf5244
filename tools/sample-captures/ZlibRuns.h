// A zlib stream that shortens runs of one byte and nothing else: all that a gradient needs.
#pragma once

#include <string>
#include <string_view>

namespace samples {

// Any inflate reads the result. RFC 1950 and RFC 1951.
std::string ZlibCompressRuns(std::string_view bytes);

}  // namespace samples
