// The request to re-encode a file, smaller or with a meme.
#pragma once

#include <string>

#include "plugin-modules/Gallery/src/endpoints/GalleryTaskBase.h"
#include "plugin-modules/Gallery/src/transcode/Transcoder.h"

class TranscodeMediaFile : public GalleryTaskBase<TranscodeMediaFile> {
  public:
    using GalleryTaskBase::GalleryTaskBase;

    KXP::RetVal ExecuteAsync(const KXP::Value& params) override;
    void FinishAsync(KXP::Value& response, KXP::Allocator& allocator) override;

  private:
    void Parse(const KXP::Value& params);
    KXP::RetVal TranscodeVideo(const Transcoder& transcoder);
    KXP::RetVal TranscodeImage(const Transcoder& transcoder);

    std::string file_;
    std::string targetPath_;
    int maxFileSizeMB_ = 0;
    Transcoder::EncodeQuality quality_ = Transcoder::EncodeQuality::Medium;
    Transcoder::EncodeFps fps_ = Transcoder::EncodeFps::High;
    double newDuration_ = 0;
    std::string userData_;
    std::string memeImage_;  // base64; empty for none
    // Width and height are those of the request until an encoder changes them.
    Transcoder::Output output_;
};
