#include "plugin-modules/Gallery/src/endpoints/VideoTasks.h"

#include <memory>
#include <string>

#include "common/json/JsonHelpers.h"
#include "common/text/SafeString.h"
#include "plugin-modules/Gallery/src/editing/Trimmer.h"
#include "plugin-modules/Gallery/src/engraving/Engraver.h"

namespace {

template <size_t kSize>
void ReadText(const KXP::Value& params, const char* key, wchar_t (&field)[kSize]) {
    wcscpy_s(field, kSize, KXP::JSONGetStrW(params, key).c_str());
}

void ReadCapture(const KXP::Value& params, CaptureRequestInfo& info) {
    info.cmsId = KXP::jsonGetValueOrDefault<int>(params, "cmsId", 0);
    ReadText(params, "DRSProfileName", info.profileName);
    ReadText(params, "DRSAppName", info.drsAppName);
    ReadText(params, "DRSShortName", info.shortName);
    // The catalogue's spelling begins with a capital letter, but no page sends that.
    info.captureType = KXP::jsonGetValueOrDefault<bool>(params, "isAHighlight", false)
                           ? CaptureRequestInfo::kHighlight
                           : CaptureRequestInfo::kOrdinary;
    ReadText(params, "highlightDefinitionId", info.highlightId);
    ReadText(params, "highlightGroupId", info.highlightGroupId);
    info.tags = KXP::jsonGetMaskOrZero(params, "highlightTags");
    // Overwrites the tags on purpose: the blocks that exist were engraved like this.
    info.tags = KXP::jsonGetMaskOrZero(params, "highlightSignificance");
    ReadText(params, "mediaType", info.mediaType);
}

}  // namespace

KXP::RetVal TrimVideo::ExecuteAsync(const KXP::Value& params) {
    return WithTracker([&]() -> KXP::RetVal {
        const auto input = KXP::jsonGetValue<std::string>(params, "input");
        const auto output = KXP::jsonGetValue<std::string>(params, "output");
        const auto headTrimMs = KXP::jsonGetValue<double>(params, "headTrimMs");
        const auto lengthMs = KXP::jsonGetValue<double>(params, "lengthMs");
        const std::shared_ptr<UGCTracker> tracker = Tracker();
        const auto cut = [&](const std::string& source, const std::string& clip, double start,
                             double length) {
            return api().GetTranscoder()->TrimVideoFile(source, clip, start, length, false);
        };
        return Trimmer(*tracker, cut, cancelled_).TrimUGC(input, output, headTrimMs, lengthMs);
    });
}

void TrimVideo::CancelTask() {
    cancelled_ = true;
    WakeTracker();
}

KXP::RetVal AddMeme::ExecuteAsync(const KXP::Value& params) {
    return WithTracker([&]() -> KXP::RetVal {
        const auto file = KXP::jsonGetValue<std::string>(params, "file");
        const KXP::Value& texts = KXP::JSONGetObject(params, "memeInfo");
        std::string top;
        std::string bottom;
        if (texts.MemberCount() > 0) {
            top = KXP::jsonGetValue<std::string>(texts, "topBarText");
            bottom = KXP::jsonGetValue<std::string>(texts, "bottomBarText");
        }
        return Tracker()->AddMeme(file, top, bottom);
    });
}

KXP::RetVal EngraveMP4::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const auto info = std::make_unique<CaptureRequestInfo>();
        const auto file = KXP::jsonGetValue<std::string>(params, "file");
        ReadCapture(params, *info);
        (void)Engraver().apply(file, *info);
        return {};
    });
}
