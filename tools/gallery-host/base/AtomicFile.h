// Writing a file so that nobody ever sees half of it.
#pragma once

#include <string>
#include <string_view>

namespace host {

// Writes a temporary file beside the path and renames it, so that the path holds the old bytes or all the new
// ones. On failure it removes the temporary file and throws Failure(kExitFailed). It refuses a path that
// leads to anything but an ordinary file, because the rename would replace, say, a device.
void WriteFileAtomically(const std::string& path, std::string_view bytes);

}  // namespace host
