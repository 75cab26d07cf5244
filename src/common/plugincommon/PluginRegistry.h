// Which modules this library carries, and under which profile it runs.
#pragma once

#include <map>
#include <string>

#include "CobalixUtil.h"

namespace KXP {

class PluginModuleBase;
class TaskQueue;

class PluginRegistry {
  public:
    using ModuleFactory = PluginModuleBase* (*)(TaskQueue&);
    using ModuleMap = std::map<ModuleFactory, std::string>;

    static PluginRegistry& Instance();

    // Creates the registry and does nothing more: the library's single module is made by
    // IContainerConnector::CreatePluginInstance, and the map stays empty.
    static void RegisterModule(ModuleFactory factory, const char* name);

    // A library of several modules would fill its map here.
    static void RegisterPluginModule() {}
    static void RegisterAllModules() {}

    const ModuleMap& GetModuleMap() const { return modules_; }
    // The names as the container shows them.
    std::string GetModuleList() const;
    // The single place that would distinguish a second profile. Throws Exception for an unknown one.
    Profile GetPluginProfile() const;

  private:
    PluginRegistry() = default;

    ModuleMap modules_;
};

}  // namespace KXP
