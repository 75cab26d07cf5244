// The requests that copy and move a file of the product's own to another place, and what they ask for.
#pragma once

#include <atomic>
#include <string>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

struct FileTransfer {
    // Throws std::runtime_error unless an own file is to go to a place where nothing is.
    static FileTransfer Parse(const KXP::Value& params);

    std::string source;
    std::string destination;  // a full path
};

class GalleryCopyFile : public GalleryTaskBase<GalleryCopyFile> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void CancelTask() override { cancelled_ = true; }

  private:
    std::atomic<bool> cancelled_{false};
};

class GalleryMoveFile : public GalleryTaskBase<GalleryMoveFile> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void CancelTask() override;

  private:
    // A page may ask about the moved file at once, and finds it on record then.
    void FollowMove(const FileTransfer& transfer);

    std::atomic<bool> cancelled_{false};
};
