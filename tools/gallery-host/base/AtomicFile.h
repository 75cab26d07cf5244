// Writing a file so that nobody ever sees half of it.
#pragma once

#include <string>
#include <string_view>

namespace host {

// Writes beside the path and renames, so that the path holds the old bytes or all the new ones. Throws
// Failure(kExitFailed) and leaves nothing behind; for what is there and no ordinary file as well, as a device
// would be replaced.
void WriteFileAtomically(const std::string& path, std::string_view bytes);

}  // namespace host
