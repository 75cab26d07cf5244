// The request for the record of one capture, with a thumbnail if the page wants one.
#pragma once

#include <optional>

#include "plugin-modules/Gallery/src/endpoints/ThumbnailTask.h"

class GetMetaData : public ThumbnailTask<GetMetaData> {
  public:
    using ThumbnailTask::ThumbnailTask;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    // Writes nothing for a file that is not on record.
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;

  private:
    std::optional<TrackedUGC> ugc_;
};
