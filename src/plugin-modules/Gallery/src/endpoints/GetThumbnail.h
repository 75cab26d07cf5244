// The request for the picture of a file.
#pragma once

#include <atomic>
#include <string>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class GetThumbnail : public GalleryTaskBase<GetThumbnail> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    // Writes nothing for a file without a picture, which is no failure.
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;
    void CancelTask() override { api().CancelThumbnail(cancelled_); }

  private:
    std::atomic<bool> cancelled_{false};
    std::string thumbnail_;
};
