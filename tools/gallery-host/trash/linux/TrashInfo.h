// What the trash knows of a file: the ".trashinfo" file beside it, after the convention that desktops share
// (freedesktop.org).
#pragma once

#include <string>
#include <string_view>

namespace host {

struct TrashInfo {
    // Where the file was, any bytes: absolute, or below the folder that holds the trash.
    std::string path;
    // Local time, "2021-03-07T14:05:09", so that later texts are later times; empty when it is unknown.
    std::string deleted;
};

// False when the text does not say where the file was.
bool ReadTrashInfo(std::string_view text, TrashInfo& info);

}  // namespace host
