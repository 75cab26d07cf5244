// The requests that make montages. The work is done by a separate process.
#pragma once

#include <memory>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"
#include "plugin-modules/Gallery/src/transcode/Transcoder.h"

// Makes one from a script. This platform accepts the script and does nothing with it.
class CreateMontage : public GalleryTaskBase<CreateMontage> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
};

// Makes one from captures by a recipe from the cloud. Runs as long as the process does.
class CreateMontageFromRecipe : public GalleryTaskBase<CreateMontageFromRecipe> {
  public:
    CreateMontageFromRecipe(KXP::PluginModuleBase& module, std::unique_ptr<KXP::JSONMessage> request,
                            std::shared_ptr<ZvGalleryAPI> api);

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;

  private:
    KXP::RetVal CefMontage(const KXP::Value& params);

    const std::shared_ptr<Transcoder> transcoder_;
    // Exists from the request on: a cancel right after it may arrive before this task's thread runs.
    Transcoder::MontageRun run_;
};
