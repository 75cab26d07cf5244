// The request for a thumbnail of a file.
#pragma once

#include <atomic>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class GetThumbnail : public GalleryTaskBase<GetThumbnail> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    // Writes nothing when there is no thumbnail; that is not a failure.
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;
    void CancelTask() override { api().CancelThumbnail(cancelled_); }

  private:
    std::atomic<bool> cancelled_{false};
    ThumbnailCache::Text thumbnail_;
};
