// The requests for montages, which a process of its own makes.
#pragma once

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

// By a script, which this platform takes and does nothing with.
class CreateMontage : public GalleryTaskBase<CreateMontage> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
};

// By a recipe from the cloud, from captures. Lasts as long as the process does.
class CreateMontageFromRecipe : public GalleryTaskBase<CreateMontageFromRecipe> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;

  private:
    KXP::RetVal CefMontage(const KXP::Value& params);
};
