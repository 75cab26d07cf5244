// Questions about the folder that captures lie in.
#pragma once

#include <string>

namespace media {

// Stands in a thumbnail's name between the name of its file and the extension.
inline constexpr const char* kThumbnailMark = " Thumbnail";

// Whether a folder holds no file, hidden ones and folders aside; with `onlyOwn` no file of the product's own.
// A folder that cannot be opened is empty; a file that cannot be inspected counts as own.
bool IsDirectoryEmpty(const std::string& path, bool onlyOwn);

// Whether a thumbnail stands beside `path`: the same name and kThumbnailMark, and ".png" for the
// extension ".exr" or ".jpg" for ".jpg". Fills `thumbnail` with its path when there is one.
bool CheckIfThumbnailExistsForFile(const std::string& path, const std::string& extension,
                                   std::string& thumbnail);

// Whether the file is a capture by its bytes: a regular file, and no link, of the product's own. False for
// one that cannot be read.
bool IsOwnCapture(const std::string& path);

// Whether a recorded capture may be deleted. Anybody can edit the file of records, which may thus name any
// path: only a regular file, and no link, that lies in a game's folder of the gallery or is own by its bytes
// may go.
bool MayDeleteCapture(const std::string& path, const std::string& gallery);

}  // namespace media
