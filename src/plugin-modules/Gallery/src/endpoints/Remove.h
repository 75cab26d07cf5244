// The request that deletes one capture.
#pragma once

#include <string>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class Remove : public GalleryTaskBase<Remove> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;

  private:
    // Throws std::invalid_argument for what is no capture on record.
    void Parse(const KXP::Value& params, const UGCTracker& tracker);

    std::string file_;
};
