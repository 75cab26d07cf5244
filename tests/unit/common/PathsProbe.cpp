// A library that tests load from within product roots of their own making, so that the code under test asks
// the loader for its place as the plug-in does.
#include "tests/unit/common/PathsProbe.h"

#include "common/Config.h"
#include "common/Exception.h"
#include "common/Profile.h"

namespace {

template <typename Call>
std::string TextOrError(Call call) {
    try {
        return call();
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace

#pragma GCC visibility push(default)

extern "C" void ProbePaths(PathsProbe& paths) {
    paths.productRoot = TextOrError(KXP::GetProductBinaryDirectory);
    paths.pluginRoot = KXP::GetPluginBinaryDirectory();
    paths.libraryFile = KXP::GetLibraryFilePath();
    paths.libraryName = KXP::GetLibraryName();
    paths.nameWithoutPrefix = KXP::GetLibraryNameNoPrefix();
    paths.pluginConfig = TextOrError(KXP::GetPluginConfigFile);
}

extern "C" void ProbeConfigs(const std::string& data, ConfigsProbe& configs) {
    KXP::Config config;
    configs.result = config.ReadConfigs();
    configs.found = config.FindAppData(data);
    configs.mediaDirs = config.GetMediaDirs();
}

#pragma GCC visibility pop
