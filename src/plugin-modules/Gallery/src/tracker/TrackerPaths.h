// Parts of a capture's path. On this level "/" alone stands between them, whatever a file's name holds.
#pragma once

#include <optional>
#include <string>

inline std::string WithoutSlash(std::string path) {
    if (!path.empty() && path.back() == '/') path.pop_back();
    return path;
}

// The root's parent is the root.
inline std::string ParentOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

inline std::string NameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

// The path under which a file is on record: `gallery`, which ends in "/", the game's folder and the name. The
// folder of `path` has to exist, and lies in the gallery by device and inode, whatever the text says. No
// value where no file is ever on record: elsewhere, in the gallery itself, in deeper and in hidden folders.
std::optional<std::string> CapturePathOf(const std::string& path, const std::string& gallery);
