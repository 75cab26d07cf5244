// Where the product lives on disk: the user's folders, the product's data folders, and the root of the
// installed product with its configuration files. Paths are UTF-8 without a "/" at the end. Every call may be
// made from any thread. KXP::Profile, which selects a family of data folders, is declared with the log; the
// path of this library and the other folders of the platform are in base/Places.h.
#pragma once

#include <string>
#include <vector>

#include "CobalixUtil.h"
#include "base/Places.h"

namespace KXP {

enum SpecialDirectory : int {
    SD_APP_SUPPORT = 1,    // the user's application data
    SD_HOME = 2,           // the user's home
    SD_MOVIES = 3,         // the user's videos
    SD_TEMP = 4,           // temporary files of the product; created when missing
    SD_LIBRARY = 5,        // the user's settings
    SD_PROGRAM_FILES = 7,  // known by name only
};

// Throws Exception 0x80070057 for a folder that this platform does not have.
std::string GetSpecialDirectoryPath(SpecialDirectory directory);
std::string GetSpecialDirectory(SpecialDirectory directory);
// Makes the folder that `parts` name in a special one, as the function of DirUtil.h does, and returns its
// path.
std::string CreateDirectoryPath(SpecialDirectory directory, const std::vector<std::string>& parts);

// Both throw Exception 0x80070057 for a profile out of range. The application data directory of LocalApp is
// the running program's own; of the others it is the product's.
std::string GetProductDataDirectory(Profile profile);
std::string GetAppDataDirectory(Profile profile);

// The whole real path of the running program, and its file name. Throw std::runtime_error when it is
// unknown.
std::string GetExePath();
std::string GetExeName();

// The library's file name up to the last ".", for example "libGallery", and the same without a leading "lib".
// Empty when it is unknown.
std::string GetLibraryName();
std::string GetLibraryNameNoPrefix();
// Names the calling thread for the log after the library. Without memory it stays without a name.
void NameLibraryThread(const char* suffix) noexcept;
std::string LibraryNameOfPath(const std::string& path);
std::string WithoutLibraryPrefix(const std::string& name);

// The product root as seen from a plug-in's place in it, four levels up, and the data folder under that.
std::string GetPluginBinaryDirectory();
std::string GetPluginBinaryDataDirectory();

// The product root: the first of four and three levels above this library that holds the product config.
// ".." stays in it. Found once and kept; not finding it is logged, throws Exception 0x80004005 and is tried
// again by the next call.
std::string GetProductBinaryDirectory();

// The configuration files. This product has no application config, so its path is empty.
std::string GetProductConfigFilePath();
std::string GetPluginConfigFile();
std::string GetAppConfigFilePath();

namespace Platform {
// The user's videos; the folder need not exist.
std::string MoviesFolder();
}  // namespace Platform

}  // namespace KXP
