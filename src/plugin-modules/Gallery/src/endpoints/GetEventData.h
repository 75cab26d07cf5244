// The request for the activity logs of games.
#pragma once

#include <vector>

#include "plugin-modules/Gallery/src/activity/ActivityData.h"
#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class GetEventData : public GalleryTaskBase<GetEventData> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;

  private:
    std::vector<ActivityData> recents_;
};
