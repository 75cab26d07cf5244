// The requests that change a video or what is on record of it.
#pragma once

#include <atomic>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class TrimVideo : public GalleryTaskBase<TrimVideo> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    // Done once the clip is on record, or after two seconds.
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

    // Success also when the file could not be engraved, which is logged.
    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
};
