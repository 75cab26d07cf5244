// The one plug-in module of the library, which the container starts.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "common/plugincommon/PluginModuleBase.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"
#include "plugin-modules/Gallery/src/endpoints/HighlightRequests.h"
#include "plugin-modules/Gallery/src/endpoints/MontageRequests.h"
#include "plugin-modules/Gallery/src/endpoints/PreviewRequests.h"
#include "plugin-modules/Gallery/src/endpoints/SettingsRequests.h"

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
    void Abandon() override EXCLUDES(abandonMutex_);

  private:
    // The requests that are answered on the worker.
    struct Requests {
        explicit Requests(ZvGalleryAPI& api) : settings(api), highlights(api), previews(api), montages(api) {}

        SettingsRequests settings;
        HighlightRequests highlights;
        PreviewRequests previews;
        MontageRequests montages;
    };

    template <typename Task>
    void RegisterTask(const std::string& name);
    void RegisterEndpoints();
    void SubscribeToCaptures();

    // Null until Initialize has succeeded and after Uninitialize. Shared with the tasks that use it, which
    // may be abandoned with it.
    std::shared_ptr<ZvGalleryAPI> api_;
    // The same, for Abandon.
    KXP::Mutex abandonMutex_;
    std::weak_ptr<ZvGalleryAPI> toAbandon_ GUARDED_BY(abandonMutex_);
    std::optional<Requests> requests_;  // while there is an API object
};
