// A library that tests load from within product roots of their own making, so that the code under test asks
// the loader for its place as the plug-in does.
#include "common/Config.h"
#include "common/Exception.h"
#include "common/Profile.h"

namespace {

std::string Answer(const std::string& question) {
    if (question == "product root") return KXP::GetProductBinaryDirectory();
    if (question == "plug-in root") return KXP::GetPluginBinaryDirectory();
    if (question == "plug-in config") return KXP::GetPluginConfigFile();
    KXP::Config config;
    const KXP::RetVal result = config.ReadConfigs();
    if (result.Failed()) return KXP::ToStr(result);
    return config.FindAppData(question);
}

}  // namespace

// Any other question is the name of a data file, and the answer its place.
extern "C" __attribute__((visibility("default"))) void ProbePaths(const std::string& question,
                                                                  std::string& answer) {
    try {
        answer = Answer(question);
    } catch (const std::exception& error) {
        answer = error.what();
    }
}
