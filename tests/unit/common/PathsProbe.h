// What the probe library tells about its place.
#pragma once

#include <string>
#include <vector>

#include "common/RetVal.h"

struct PathsProbe {
    std::string productRoot;
    std::string pluginRoot;
    std::string libraryFile;
    std::string libraryName;
    std::string nameWithoutPrefix;
    std::string pluginConfig;
};

struct ConfigsProbe {
    KXP::RetVal result;
    std::string found;  // where the asked data file is
    std::vector<std::string> mediaDirs;
};

using ProbePathsFunction = void (*)(PathsProbe& paths);
using ProbeConfigsFunction = void (*)(const std::string& data, ConfigsProbe& configs);
