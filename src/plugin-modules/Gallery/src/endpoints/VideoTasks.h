// The requests that change a video or its record.
#pragma once

#include <atomic>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class TrimVideo : public GalleryTaskBase<TrimVideo> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    // Returns when the clip is on record, or after two seconds.
    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void CancelTask() override;

  private:
    std::atomic<bool> cancelled_{false};
};

class AddMeme : public GalleryTaskBase<AddMeme> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
};

class EngraveMP4 : public GalleryTaskBase<EngraveMP4> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    // Succeeds even when the file cannot be engraved; that is logged.
    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
};
