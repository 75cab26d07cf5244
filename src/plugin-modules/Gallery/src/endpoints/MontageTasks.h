// The requests for montages, which a process of its own makes.
#pragma once

#include <memory>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"
#include "plugin-modules/Gallery/src/transcode/Transcoder.h"

// By a script, which this platform takes and does nothing with.
class CreateMontage : public GalleryTaskBase<CreateMontage> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
};

// By a recipe from the cloud, from captures. Lasts as long as the process does.
class CreateMontageFromRecipe : public GalleryTaskBase<CreateMontageFromRecipe> {
  public:
    CreateMontageFromRecipe(KXP::PluginModuleBase& module, std::unique_ptr<KXP::JSONMessage> request,
                            std::shared_ptr<ZvGalleryAPI> api);

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;

  private:
    KXP::RetVal CefMontage(const KXP::Value& params);

    const std::shared_ptr<Transcoder> transcoder_;
    // From the request on, as a cancel that comes right behind it may be ahead of this task's thread.
    Transcoder::MontageRun run_;
};
