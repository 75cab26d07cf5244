// Folders and the text of paths: tests, listings, creation, parts. Paths are UTF-8 with "/" between their
// parts. Nothing here holds state.
#pragma once

#include <string>
#include <vector>

namespace KXP {

class FolderReader;

// Something is at the path and it can be opened as a folder.
bool DirectoryExists(const std::string& path);

// Whether the caller may write there.
bool DirectoryWritable(const std::string& path);

// True for every text that is not empty.
bool PathIsAbsolute(const std::string& path);

// By real path. Two paths that both lead nowhere count as the same.
bool SamePath(const std::string& first, const std::string& second);

// The text before the last "/" or "\"; the whole path when it has neither.
std::string GetDirName(const std::string& path);
// The text after the last "/"; only without one, after the last "\".
std::string GetFileNameFromPath(const std::string& path);
// The parts with "/" between them.
std::string FileJoin(const std::vector<std::string>& parts);

// Makes every folder on the way, private to the user, and returns the path, which always starts at the root.
// An element may be one name or a whole path. Throws Exception 0x80004005 with errno as its detail.
std::string CreateDirectoryPath(const std::vector<std::string>& parts);

// rmdir: 0, or -1 when the folder is not empty or not there.
int DirectoryRemove(const std::string& path);

// For a reader that has reached the end of the folder: logs how many names were passed over, if any.
void LogIllegibleNames(const FolderReader& reader, const std::string& folder);

// Names without the folder, in the folder's own order; none when it cannot be read. Links count as what they
// lead to. The extension is matched by case and has no dot.
std::vector<std::string> EnumFilesWithExtension(const std::string& folder, const std::string& extension);
std::vector<std::string> EnumDirectories(const std::string& folder);

}  // namespace KXP
