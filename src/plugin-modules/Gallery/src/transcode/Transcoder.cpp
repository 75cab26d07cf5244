#include "plugin-modules/Gallery/src/transcode/Transcoder.h"

#include <exception>

#include "CobalixUtil.h"
#include "common/product/Profile.h"
#include "common/results/RetVal.h"
#include "common/text/SafeString.h"
#include "common/text/TextUtil.h"

namespace {

constexpr double kUnitsPerMillisecond = 10000;
constexpr double kTwoTo64 = 18446744073709551616.0;

// The time in units of 100 ns; false where it has none.
bool ToUnits(double milliseconds, uint64_t& units) {
    const double value = milliseconds * kUnitsPerMillisecond;
    if (!(value >= 0 && value < kTwoTo64)) return false;
    units = static_cast<uint64_t>(value);
    return true;
}

const char* ReasonOf(int32_t value) {
    using namespace ovsxcodeapi;
    switch (value) {
        case RemuxUnknownFormat:
            return "the source is no MP4 video";
        case RemuxDamaged:
            return "the source is damaged";
        case RemuxOverLimit:
            return "the source exceeds a limit";
        case RemuxUnreadable:
            return "the source cannot be read";
        case RemuxNoMemory:
            return "out of memory";
        case RemuxEmptyRange:
            return "there is nothing between the two times";
        case RemuxNoVideo:
            return "the source has no video track";
        case RemuxUnwritable:
            return "the clip cannot be written";
        case RemuxUnfaithful:
            return "the clip would not be true to its source";
        case RemuxBadRecord:
            return "a path is not valid";
        case RemuxSameFile:
            return "the clip would replace its source";
        case RemuxNoMediaLibrary:
            return "libovnxmedia cannot be loaded";
        default:
            return "the library cannot cut videos";
    }
}

std::unique_ptr<TranscoderPlatformContext> Open() {
    try {
        auto context = std::make_unique<TranscoderPlatformContext>();
        context->Load(KXP::GetPluginBinaryDirectory() + "/Contents/Frameworks/dependencies");
        context->Initialize();
        return context;
    } catch (const std::exception& error) {
        // A product folder whose name is too long for the library, say.
        KXP_LOG(KXP::LogFailure, "No videos can be cut: %s", error.what());
        return std::make_unique<TranscoderPlatformContext>();
    }
}

}  // namespace

const std::map<std::string, Transcoder::EncodeQuality> kTranscodeQualityJsonStrs = {
    {"low", Transcoder::EncodeQuality::Low},
    {"medium", Transcoder::EncodeQuality::Medium},
    {"high", Transcoder::EncodeQuality::High},
    {"ultra", Transcoder::EncodeQuality::Ultra},
};

const std::map<std::string, Transcoder::EncodeFps> kTranscodeFpsJsonStrs = {
    {"low", Transcoder::EncodeFps::Low},
    {"medium", Transcoder::EncodeFps::Medium},
    {"high", Transcoder::EncodeFps::High},
    {"ultra", Transcoder::EncodeFps::Ultra},
};

Transcoder::Transcoder() : context_(Open()) {}

int32_t Transcoder::TrimVideoFile(const std::string& input, const std::string& output, double start,
                                  double length, bool startOnKeyframe) const {
    const auto block = std::make_unique<ovsxcodeapi::RemuxBlock>();
    if (!ToUnits(start, block->start) || !ToUnits(length + start, block->end)) {
        KXP_LOG(KXP::LogFailure, "No time range: %g ms from %g ms on", length, start);
        return KXP::Code::kFailure;
    }
    wcscpy_s(block->input, ovsxcodeapi::kTextSize, KXP::Utf8ToWide(input).c_str());
    wcscpy_s(block->output, ovsxcodeapi::kTextSize, KXP::Utf8ToWide(output).c_str());
    if (startOnKeyframe) block->flags |= ovsxcodeapi::RemuxAtKeyframe;
    ovsxcodeapi::RemuxParams params;
    params.block = block.get();
    const int32_t value = TrimVideoFile(params);
    if (value == 0 && block->leftOut > 0)
        KXP_LOG(KXP::LogMilestone, "left out of %s, with nothing in the range: %u of the tracks",
                output.c_str(), block->leftOut);
    if (value == 0) return KXP::Code::kOk;
    KXP_LOG(KXP::LogFailure, "cannot cut %s into %s: %s", input.c_str(), output.c_str(), ReasonOf(value));
    KXP_LOG(KXP::LogFailure, "Error returned from OvsXcodeRemux transcode lib: %d", value);
    return KXP::Code::kFailure;
}

int32_t Transcoder::CreateMontage(const std::string&) const {
    return KXP::Code::kOk;
}

int32_t Transcoder::TranscodeImageFile(const std::string&, int, EncodeQuality, const std::string&,
                                       Output&) const {
    return KXP::Code::kOk;
}

int32_t Transcoder::TranscodeImageFileWithMeme(const std::string&, int, EncodeQuality, const std::string&,
                                               Output&, const std::string&) const {
    return KXP::Code::kOk;
}

int32_t Transcoder::TranscodeVideoFile(const std::string&, int, EncodeQuality, const std::string&, double,
                                       Output&, EncodeFps) const {
    return KXP::Code::kOk;
}

int32_t Transcoder::TranscodeVideoFileWithMeme(const std::string&, int, EncodeQuality, const std::string&,
                                               Output&, EncodeFps, const std::string&) const {
    return KXP::Code::kOk;
}
