#include "common/plugincommon/PluginRegistry.h"

#include "common/results/Exception.h"

namespace KXP {
namespace {

// Fixed when the product is built.
constexpr const char* ZV_PROFILE = "LocalApp";

}  // namespace

PluginRegistry& PluginRegistry::Instance() {
    static PluginRegistry registry;
    return registry;
}

void PluginRegistry::RegisterModule(ModuleFactory, const char*) {
    Instance();
}

std::string PluginRegistry::GetModuleList() const {
    return "Gallery";
}

Profile PluginRegistry::GetPluginProfile() const {
    if (std::string(ZV_PROFILE) == "LocalApp") return LocalApp;
    throw Exception(Code::kFailure, "Invalid ZV_PROFILE set", 0);
}

}  // namespace KXP
