// What requests that answer with a thumbnail share.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "common/json/JsonHelpers.h"
#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

template <typename T>
class ThumbnailTask : public GalleryTaskBase<T> {
  public:
    using GalleryTaskBase<T>::GalleryTaskBase;

    void CancelTask() override { this->api().CancelThumbnail(cancelled_); }
    // Leaves the thumbnail to other programs once the page has its answer.
    void FinishTask() override {
        GalleryTaskBase<T>::FinishTask();
        if (drawn_) this->api().ShareThumbnail(*std::exchange(drawn_, std::nullopt));
    }

  protected:
    // False when the file has no thumbnail.
    bool Make(const std::string& file, uint32_t width, uint32_t height) {
        return this->api().GetThumbnail(file, width, height, cancelled_, thumbnail_, drawn_);
    }
    // Writes nothing when there is none; that is not a failure.
    void Write(KXP::Value& response, KXP::Allocator& allocator) const {
        if (thumbnail_) response.AddMember("thumbnail", KXP::ReferTo(*thumbnail_), allocator);
    }

  private:
    std::atomic<bool> cancelled_{false};
    ThumbnailCache::Text thumbnail_;
    std::optional<DrawnThumbnail> drawn_;
};
