#include "common/product/Profile.h"

#include <exception>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "common/results/Exception.h"
#include "common/threads/Mutex.h"

namespace KXP {
namespace {

constexpr const char* kVendorFolder = "/ZORVEX/";
constexpr const char* kProductConfig = "config.json";
constexpr const char* kConfigsFolder = "/Contents/Resources/data/configs/";

[[noreturn]] void ThrowInvalidProfile(Profile profile) {
    const std::string text = "Invalid profile type " + std::to_string(static_cast<int>(profile));
    throw Exception(Code::kInvalidArgument, text.c_str(), 0);
}

[[noreturn]] void ThrowNoProductRoot(const std::vector<std::string>& tried) {
    KXP_LOG(LogFailure, "Cannot find %s. Paths searched:", kProductConfig);
    for (const std::string& path : tried)
        KXP_LOG(LogFailure, "\t%s", path.c_str());
    throw Exception(Code::kFailure, "Cannot find product root", 0);
}

std::string FindProductRoot() {
    std::vector<std::string> tried;
    for (const char* up : {"/../../../..", "/../../.."}) {
        std::string root = GetLibraryPath() + up;
        tried.push_back(root + kConfigsFolder + kProductConfig);
        if (FileExists(tried.back())) return root;
    }
    ThrowNoProductRoot(tried);
}

}  // namespace

std::string GetSpecialDirectoryPath(SpecialDirectory directory) {
    switch (directory) {
        case SD_APP_SUPPORT:
            return Platform::AppSupportFolder();
        case SD_HOME:
            return Platform::HomeFolder();
        case SD_MOVIES:
            return Platform::MoviesFolder();
        case SD_TEMP:
            return CreateDirectoryPath({GetProductDataDirectory(ProfileProduct), "temp"});
        case SD_LIBRARY:
            return Platform::LibraryFolder();
        case SD_PROGRAM_FILES:
            // One text on every platform that has no such folder; readers of logs search for it.
            throw Exception(Code::kInvalidArgument, "SD_PROGRAM_FILES is not supported on Mac OS", 0);
    }
    throw Exception(Code::kInvalidArgument, "Unknown SpecialDirectory Identifier", 0);
}

std::string GetSpecialDirectory(SpecialDirectory directory) {
    return GetSpecialDirectoryPath(directory);
}

std::string CreateDirectoryPath(SpecialDirectory directory, const std::vector<std::string>& parts) {
    std::vector<std::string> all = {GetSpecialDirectory(directory)};
    all.insert(all.end(), parts.begin(), parts.end());
    return CreateDirectoryPath(all);
}

std::string GetProductDataDirectory(Profile profile) {
    switch (profile) {
        case LocalApp:
        case ProfileProduct:
            return GetSpecialDirectory(SD_APP_SUPPORT) + kProductFolder;
        case ProfileLibrary:
            return GetSpecialDirectory(SD_LIBRARY) + kProductFolder;
    }
    ThrowInvalidProfile(profile);
}

std::string GetAppDataDirectory(Profile profile) {
    if (profile == LocalApp) return GetSpecialDirectory(SD_APP_SUPPORT) + kVendorFolder + GetExeName();
    return GetProductDataDirectory(profile);
}

std::string GetExeName() {
    return NameOf(GetExePath());
}

std::string GetLibraryName() {
    return LibraryNameOfPath(LoadedLibraryName());
}

void NameLibraryThread(const char* suffix) noexcept {
    try {
        LogNameThread(GetLibraryName().c_str(), suffix);
    } catch (const std::exception& error) {
        KXP_LOG(LogDetail, "A thread has no name: %s", error.what());
    }
}

std::string GetLibraryNameNoPrefix() {
    return WithoutLibraryPrefix(GetLibraryName());
}

std::string LibraryNameOfPath(const std::string& path) {
    const std::string name = NameOf(path);
    return name.substr(0, name.rfind('.'));
}

std::string WithoutLibraryPrefix(const std::string& name) {
    return name.rfind("lib", 0) == 0 ? name.substr(3) : name;
}

std::string GetPluginBinaryDirectory() {
    return GetLibraryPath() + "/../../../..";
}

std::string GetPluginBinaryDataDirectory() {
    return GetPluginBinaryDirectory() + "/Contents/Resources/data";
}

std::string GetProductBinaryDirectory() {
    static Mutex mutex;
    static std::string root;
    {
        MutexLock lock(mutex);
        if (!root.empty()) return root;
    }
    // The search logs, so it runs unlocked; threads that search at the same time find the same.
    std::string found = FindProductRoot();
    MutexLock lock(mutex);
    root = found;
    return found;
}

std::string GetProductConfigFilePath() {
    return GetProductBinaryDirectory() + kConfigsFolder + kProductConfig;
}

std::string GetPluginConfigFile() {
    return GetProductBinaryDirectory() + kConfigsFolder + GetLibraryNameNoPrefix() + ".json";
}

std::string GetAppConfigFilePath() {
    return "";
}

}  // namespace KXP
