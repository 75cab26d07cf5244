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

    // Brings the registry up and does nothing more: the library's single module is made by
    // IContainerConnector::CreatePluginInstance, and the map stays empty.
    static void RegisterModule(ModuleFactory factory, const char* name);

    // What a library of several modules fills its map with; this one carries one.
    static void RegisterPluginModule() {}
    static void RegisterAllModules() {}

    const ModuleMap& GetModuleMap() const { return modules_; }
    // The names as the container shows them.
    std::string GetModuleList() const;
    // The one place that would tell a second profile apart. Throws Exception for an unknown one.
    Profile GetPluginProfile() const;

  private:
    PluginRegistry() = default;

    ModuleMap modules_;
};

}  // namespace KXP
