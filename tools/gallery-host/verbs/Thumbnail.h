// The verb thumb.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

struct ThumbOptions {
    std::string name;  // as the user wrote it
    std::string path;  // absolute
    std::string out;   // a file, or "-" for standard output
    unsigned width = 320;
    unsigned height = 180;
    bool json = false;
};

// The sides of "320x180", each from 1 to 16384; nothing for another text.
struct ThumbSize {
    unsigned width;
    unsigned height;
};
std::optional<ThumbSize> ReadThumbSize(const std::string& text);

// The PNG in a "data:image/png;base64," text; nothing for another text. Pure.
std::optional<std::string> ReadPngData(std::string_view text);

// Throws Failure(kExitFailed) when there is no thumbnail or it cannot be written.
void RunThumb(Session& session, Output& output, const ThumbOptions& options);

}  // namespace host
