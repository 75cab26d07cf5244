// The request with which the pages browse a folder.
#pragma once

#include <atomic>
#include <optional>

#include "plugin-modules/Gallery/src/endpoints/FolderListing.h"
#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class GetFolderListing : public GalleryTaskBase<GetFolderListing> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void WriteAsync(KXP::IJsonSink& sink) override { listing_->Write(sink); }
    void CancelTask() override { cancelled_ = true; }

  private:
    // Lists the folder as it is on disk.
    KXP::RetVal GetNonZvFolders();
    // Lists what is on record: the games of the gallery, or the captures of one game.
    KXP::RetVal GetTracked(const std::string& directory);

    std::atomic<bool> cancelled_{false};
    std::optional<FolderListing> listing_;
};
