// Where a capture can be on record.
#pragma once

#include <optional>
#include <string>

// The path under which a file is on record: `gallery`, which ends in "/", the game's folder and the name. The
// folder of `path` has to exist, and lies in the gallery by device and inode, whatever the text says. No
// value where no file is ever on record: elsewhere, in the gallery itself, in deeper and in hidden folders.
std::optional<std::string> CapturePathOf(const std::string& path, const std::string& gallery);
