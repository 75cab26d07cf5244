// Decides which paths can be on record.
#pragma once

#include <optional>
#include <string>

// The path under which the file would be on record: `gallery`, which ends in "/", the game's folder and the
// file's name. The folder of `path` has to exist; device and inode decide whether it is in the gallery, not
// the text. No value for a file that is never on record: elsewhere, in the gallery folder itself, in a deeper
// folder or in a hidden one.
std::optional<std::string> CapturePathOf(const std::string& path, const std::string& gallery);
