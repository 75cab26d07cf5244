// The requests for highlights: one that is expected, and those of a group. Without a tracker each fails with
// 0x80004005.
#pragma once

#include <memory>

#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"

// Worker.
class HighlightRequests {
  public:
    // `api` outlives this object.
    explicit HighlightRequests(ZvGalleryAPI& api) : api_(api) {}

    // The answer is the highlight with the id that its capture will have.
    KXP::RetVal EnqueuePendingHighlight(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                        KXP::Allocator& allocator);
    KXP::RetVal GetHighlightsCount(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                   KXP::Allocator& allocator);
    KXP::RetVal DeleteGroupHighlights(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                      KXP::Allocator& allocator);
    // Sends the highlights as a notification.
    KXP::RetVal OpenHighlightsGroupSummary(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                           KXP::Allocator& allocator);

  private:
    // Answers with `body(tracker, payload)`; what it throws becomes a failure with the exception's text.
    template <typename Body>
    KXP::RetVal WithTracker(const KXP::JSONMessage& message, const Body& body);

    ZvGalleryAPI& api_;
};
