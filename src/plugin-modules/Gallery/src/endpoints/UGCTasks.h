// The requests for the captures on record: those of a game, the latest of all games, and their numbers.
#pragma once

#include <vector>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"

class GetAppStats : public GalleryTaskBase<GetAppStats> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;

  private:
    unsigned videos_ = 0;
    unsigned screenshots_ = 0;
};

class GetAppUGC : public GalleryTaskBase<GetAppUGC> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void WriteAsync(KXP::IJsonSink& sink) override;

  private:
    std::vector<TrackedUGC> ugc_;
};

class GetRecentUGC : public GalleryTaskBase<GetRecentUGC> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void WriteAsync(KXP::IJsonSink& sink) override;

  private:
    std::vector<TrackedUGC> recents_;
};
