// Which modules this library carries.
#pragma once

#include <string>

namespace KXP {

class PluginRegistry {
  public:
    static PluginRegistry& Instance();

    // The names as the container shows them. The library's single module is made by
    // IContainerConnector::CreatePluginInstance.
    std::string GetModuleList() const;

  private:
    PluginRegistry() = default;
};

}  // namespace KXP
