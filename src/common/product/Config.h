// The process's configuration: the product's config file and the plug-in's own, read once when the module
// starts, and the folders in which data files are looked for.
#pragma once

#include <string>
#include <vector>

#include "common/json/Json.h"
#include "common/results/RetVal.h"

namespace KXP {

// ReadConfigs runs once, before any reader; after that the object is only read, from any thread, without a
// lock.
class Config {
  public:
    static Config& Instance();

    Config() = default;
    Config(const Config&) = delete;
    Config& operator=(const Config&) = delete;

    // Fails when the product config is missing or wrong, or the plug-in's own file exists and is wrong. A
    // second call would append to the folders again. Throws Exception 0x80004005 when there is no product
    // root.
    RetVal ReadConfigs();

    const Document& GetProductConfig() const { return productConfig_; }
    // Null without such a file.
    const Document& GetPluginConfig() const { return pluginConfig_; }
    const Document& GetAppConfig() const { return appConfig_; }

    // The first of the data folders that holds `relativePath`, a file or a folder; the whole path, or empty
    // and logged. The user's data comes before configured folders, and these before the product's own.
    std::string FindAppData(const std::string& relativePath) const;

    std::vector<std::string> GetMediaDirs() const { return mediaDirs_; }

  private:
    void FillFolders();

    Document productConfig_;
    Document appConfig_;
    Document pluginConfig_;
    std::vector<std::string> appDataDirs_;
    std::vector<std::string> mediaDirs_;
};

}  // namespace KXP
