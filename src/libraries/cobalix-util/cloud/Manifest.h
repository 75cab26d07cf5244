// The manifest of a remote folder: an object whose members are arrays of
// {"path": relative path, "size": bytes, "sha256": lower-case hex}. Other members of an entry are ignored.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace KXP::Cloud {

constexpr const char* kManifestName = "manifest.json";  // in a remote folder
constexpr size_t kMaxManifestBytes = size_t{4} << 20;
constexpr size_t kMaxManifestFiles = 10000;
constexpr uint64_t kMaxFileBytes = uint64_t{4} << 30;

struct ManifestFile {
    std::string path;
    uint64_t size = 0;
    std::string sha256;
};

// The files in the order of the text; an identical repetition is left out. Throws Error for a text of
// another form or beyond the limits, for a path that may not be used, and for two files of one path.
std::vector<ManifestFile> ParseManifest(const std::string& text);

// Whether a relative path can be appended to a folder's without leaving it and names a file the same way here
// and in an address: parts with "/" between them, none of them empty, "." or "..", no backslash, no control
// character, and no longer than file systems take.
bool IsPlainPath(const std::string& path);

}  // namespace KXP::Cloud
