// The request for a thumbnail of a file.
#pragma once

#include "plugin-modules/Gallery/src/endpoints/ThumbnailTask.h"

class GetThumbnail : public ThumbnailTask<GetThumbnail> {
  public:
    using ThumbnailTask::ThumbnailTask;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override { Write(response, allocator); }
};
