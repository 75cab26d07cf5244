// Folders and the text of paths: tests, listings, creation, copies, deletion, parts. Paths are UTF-8 with "/"
// between their parts. Nothing here holds state.
#pragma once

#include <string>
#include <vector>

#include <dirent.h>

namespace KXP {

class FolderReader;

// Something is at the path and it can be opened as a folder.
bool DirectoryExists(const std::string& path);

// Whether the caller may write there.
bool DirectoryWritable(const std::string& path);

// For an entry of an open folder. A link or an entry of unknown type is looked up by its bare name, that is
// in the process's current folder.
bool IsDirectory(const dirent* entry);

// True for every text that is not empty.
bool PathIsAbsolute(const std::string& path);

// By real path. Two paths that both lead nowhere count as the same.
bool SamePath(const std::string& first, const std::string& second);

// The text before and after the last "/" or "\"; the whole path when it has neither.
std::string GetDirName(const std::string& path);
std::string GetBaseName(const std::string& path);
// GetBaseName up to its last ".".
std::string GetBaseNameNoExt(const std::string& path);
// The text after the last "/"; only without one, after the last "\".
std::string GetFileNameFromPath(const std::string& path);
std::wstring GetFileNameFromPath(const std::wstring& path);
// The path unchanged; other platforms have a form of it for long paths.
std::string GetLongPath(const std::string& path, bool force);
// The parts with "/" between them, then "/" and `last` unless that is empty. Without parts the empty text.
std::string FileJoin(const std::vector<std::string>& parts, const std::string& last = "");

// Makes every folder on the way, private to the user, and returns the path, which always starts at the root.
// An element may be one name or a whole path. Throws Exception 0x80004005 with errno as its detail.
std::string CreateDirectoryPath(const std::vector<std::string>& parts);

// rmdir: 0, or -1 when the folder is not empty or not there.
int DirectoryRemove(const std::string& path);

// Deletes a tree. Links in it, and a link given as `path`, are removed and never followed. Throws
// std::filesystem::filesystem_error when the folder cannot be opened or cannot be removed whole.
void DirectoryDeleteRecursive(const std::string& path);

// Gives the owner write permission to everything in the tree except the folder itself and what links lead to.
// Throws std::filesystem::filesystem_error when the folder cannot be opened.
void MakeDirectoryWritable(const std::string& path);

// Copies a tree over what is at the destination. `count` is 0 for the outermost call: along each path from
// the root at most 501 entries are copied; beyond that the copy ends with false and keeps what it has copied.
// A link to a file is copied as that file; links to folders, pipes, devices and dangling links are skipped
// with a log line. Throws std::filesystem::filesystem_error when a file cannot be copied.
bool DirectoryCopy(const std::string& source, const std::string& destination, int count);

// For a reader that has reached the end of the folder: logs how many names were passed over, if any.
void LogIllegibleNames(const FolderReader& reader, const std::string& folder);

// Names without the folder, in the folder's own order; none when it cannot be read. Links count as what they
// lead to. The extension is matched by case and has no dot.
std::vector<std::string> GetFilesInDir(const std::string& folder);
std::vector<std::string> GetFilesInDirWithExtension(const std::string& folder, const std::string& extension);
std::vector<std::string> GetDirsInDir(const std::string& folder);
std::vector<std::string> EnumFiles(const std::string& folder);
std::vector<std::string> EnumFilesWithExtension(const std::string& folder, const std::string& extension);
std::vector<std::string> EnumDirectories(const std::string& folder);

// The path in the first folder where it exists; an absolute path is looked for as it is. Empty, and logged,
// when it is nowhere.
std::string FindFileInDirs(const std::vector<std::string>& folders, const std::string& path);

}  // namespace KXP
