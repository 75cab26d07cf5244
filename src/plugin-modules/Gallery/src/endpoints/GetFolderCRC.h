// The request for a checksum of a folder and of the records of its captures.
#pragma once

#include <cstdint>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class GetFolderCRC : public GalleryTaskBase<GetFolderCRC> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;

  private:
    void AddGame(UGCTracker& tracker, const std::string& game);

    uint32_t crc_ = UINT32_MAX;
};
