// The requests for what pages keep in the folder for temporary files: their previews, and a bitmap that other
// programs read.
#pragma once

#include <memory>
#include <string>

#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"
#include "plugin-modules/Gallery/src/previews/PreviewPaths.h"

// Worker, except for the destructor.
class PreviewRequests {
  public:
    // `api` outlives this object.
    explicit PreviewRequests(ZvGalleryAPI& api) : api_(api) {}
    // Deletes the previews that are still remembered.
    ~PreviewRequests();
    PreviewRequests(const PreviewRequests&) = delete;
    PreviewRequests& operator=(const PreviewRequests&) = delete;

    KXP::RetVal PopulatePreviewPath(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                    KXP::Allocator& allocator);
    KXP::RetVal DeletePreview(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                              KXP::Allocator& allocator);
    KXP::RetVal WriteEncryptedBitmap(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                     KXP::Allocator& allocator);

  private:
    KXP::RetVal DeleteStyloraPreview(const std::string& path);

    ZvGalleryAPI& api_;
    PreviewPaths previewPaths_;
};
