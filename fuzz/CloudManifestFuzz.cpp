// The manifest of a folder in the cloud: what is taken of it must stay in the local folder, whatever the
// text.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include "libraries/cobalix-util/cloud/Error.h"
#include "libraries/cobalix-util/cloud/Manifest.h"

namespace {

bool StaysBelow(const std::string& path) {
    const std::filesystem::path parts(path);
    // Nothing to be resolved in it, so that it names the same file to everybody.
    return parts.is_relative() && parts.has_filename() && parts.lexically_normal() == parts &&
           *parts.begin() != ".." && path.find('\0') == path.npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace KXP::Cloud;
    try {
        std::set<std::string> paths;
        for (const ManifestFile& file : ParseManifest({reinterpret_cast<const char*>(data), size}))
            if (!StaysBelow(file.path) || !paths.insert(file.path).second || file.size > kMaxFileBytes ||
                file.sha256.size() != 64)
                std::abort();
    } catch (const Error&) {
        return 0;
    }
    return 0;
}
