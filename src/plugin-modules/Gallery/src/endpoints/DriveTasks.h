// The requests that let a page offer places for the gallery.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class IsDirectoryWritable : public GalleryTaskBase<IsDirectoryWritable> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;

  private:
    bool writable_ = false;
};

class EnumerateDrives : public GalleryTaskBase<EnumerateDrives> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;

  private:
    std::map<std::string, std::string> drives_;
};

class GetDriveInfo : public GalleryTaskBase<GetDriveInfo> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;

  private:
    uint32_t freeMB_ = 0;
    uint32_t totalMB_ = 0;
};
