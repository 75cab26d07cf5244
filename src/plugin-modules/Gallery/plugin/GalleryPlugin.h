// The one plug-in module of the library: the gallery as the container starts it.
#pragma once

#include <memory>
#include <string>

#include "common/plugincommon/PluginModuleBase.h"

class ZvGalleryAPI;

class GalleryPlugin : public KXP::PluginModuleBase {
  public:
    GalleryPlugin();
    ~GalleryPlugin() override;

    void ReportError(const KXP::RetVal& value, const std::string& message) override;

    using PluginModuleBase::Initialize;
    using PluginModuleBase::Start;
    using PluginModuleBase::Stop;
    using PluginModuleBase::Uninitialize;
    bool Initialize() override;
    bool Start() override;
    bool Stop() override;
    void Uninitialize() override;

  private:
    template <typename Task>
    void RegisterTask(const std::string& name);
    void RegisterEndpoints();
    void SubscribeToCaptures();

    // Null until Initialize has succeeded and after Uninitialize. Shared with the tasks that use it, which
    // may be abandoned with it.
    std::shared_ptr<ZvGalleryAPI> api_;
};
