#include "plugin-modules/Gallery/src/media/Edits.h"

#include <filesystem>
#include <system_error>

namespace media {

KXP::Turns& Edits() {
    static KXP::Turns turns;
    return turns;
}

std::string EditedFile(const std::string& path) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::weakly_canonical(path, error);
    return error ? path : file.string();
}

}  // namespace media
