// The request for the width and height of a picture.
#pragma once

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class GetImageDimensions : public GalleryTaskBase<GetImageDimensions> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;

  private:
    unsigned int width_ = 0;
    unsigned int height_ = 0;
};
