#include "common/product/Config.h"

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/product/Profile.h"

namespace KXP {
namespace {

RetVal CouldNotRead(const char* which, const std::string& path) {
    RetVal result{Code::kFailure, std::string("Could not read ") + which + " config from " + path, 0};
    KXP_LOG(LogFailure, "%s", ToStr(result).c_str());
    return result;
}

}  // namespace

Config& Config::Instance() {
    static Config config;
    return config;
}

RetVal Config::ReadConfigs() {
    const std::string productPath = GetProductConfigFilePath();
    if (!ReadJSON(productPath, productConfig_)) return CouldNotRead("product", productPath);
    const std::string pluginPath = GetPluginConfigFile();
    if (FileExists(pluginPath) && !ReadJSON(pluginPath, pluginConfig_))
        return CouldNotRead("plugin", pluginPath);
    const std::string appPath = GetAppConfigFilePath();
    if (FileExists(appPath)) ReadJSON(appPath, appConfig_);
    FillFolders();
    return {};
}

void Config::FillFolders() {
    appDataDirs_.push_back(GetProductDataDirectory(ProfileProduct));
    for (const std::string& folder : JSONGetStrings(productConfig_, "additionalDataDirs"))
        appDataDirs_.push_back(PathIsAbsolute(folder) ? folder
                                                      : FileJoin({GetPluginBinaryDirectory(), folder}));
    appDataDirs_.push_back(GetPluginBinaryDataDirectory() + "/appdata/");
    for (std::string& folder : JSONGetStrings(productConfig_, "mediaDirs"))
        mediaDirs_.push_back(std::move(folder));
}

std::string Config::FindAppData(const std::string& relativePath) const {
    for (const std::string& folder : appDataDirs_) {
        std::string path = FileJoin({folder, relativePath});
        struct stat status {};
        if (stat(path.c_str(), &status) == 0) return path;
    }
    KXP_LOG(LogFailure, "Could not find path %s underneath any of the app data path(s)",
            relativePath.c_str());
    return "";
}

}  // namespace KXP
