// The user's trash: the home's, and those of the volumes. Nothing here holds state; any thread may call.
#pragma once

#include <string>
#include <vector>

namespace host {

// Moves a file to the trash of its volume, from which any file manager can restore it. Returns the reason
// when it cannot; the file is then where it was. A file is never copied to another volume for this.
std::string MoveToTrash(const std::string& path);

struct TrashedFile {
    std::string path;     // where it was, below the gallery's folder
    std::string deleted;  // local time, "2021-03-07T14:05:09"; empty when it is unknown
    std::string file;     // where it is
    std::string info;     // the file that says so
};

// The files in all trash folders of this user that were in the gallery, whoever put them there; those that
// were deleted last come first. Trash folders on network drives are read only if the gallery is there. None
// where the system keeps to itself where such files were.
std::vector<TrashedFile> ListTrashed(const std::string& gallery);

// Moves a file back to where it was, and makes its folder anew if need be. Returns the reason when it cannot,
// such as another file in its place; it then stays in the trash.
std::string Restore(const TrashedFile& trashed);

}  // namespace host
