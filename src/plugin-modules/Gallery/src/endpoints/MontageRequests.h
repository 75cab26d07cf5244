// The synchronous requests for montages; MontageTasks.h has those that make one.
#pragma once

#include <memory>

#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"

// Worker.
class MontageRequests {
  public:
    // `api` outlives this object.
    explicit MontageRequests(ZvGalleryAPI& api) : api_(api) {}

    KXP::RetVal CancelMontage(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                              KXP::Allocator& allocator);
    // A failure is in the code alone; the text is "Success" in every case.
    KXP::RetVal GetMontageCloudConfig(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                      KXP::Allocator& allocator);
    // Passes the progress on to the pages.
    KXP::RetVal UpdateMontageProgress(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                      KXP::Allocator& allocator);

  private:
    ZvGalleryAPI& api_;
};
