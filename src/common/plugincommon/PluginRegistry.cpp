#include "common/plugincommon/PluginRegistry.h"

namespace KXP {

PluginRegistry& PluginRegistry::Instance() {
    static PluginRegistry registry;
    return registry;
}

std::string PluginRegistry::GetModuleList() const {
    return "Gallery";
}

}  // namespace KXP
