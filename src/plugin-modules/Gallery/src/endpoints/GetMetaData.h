// The request for the record of one capture, with a thumbnail if the page wants one.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class GetMetaData : public GalleryTaskBase<GetMetaData> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    // Writes nothing for a file that is not on record.
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;
    void CancelTask() override { api().CancelThumbnail(cancelled_); }

  private:
    std::atomic<bool> cancelled_{false};
    std::optional<TrackedUGC> ugc_;
    ThumbnailCache::Text thumbnail_;
};
