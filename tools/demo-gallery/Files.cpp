#include "demo-gallery/Files.h"

#include <cmath>
#include <cstring>

#include "sample-captures/EngravedBlock.h"
#include "sample-captures/JpegImage.h"
#include "sample-captures/PngImage.h"
#include "sample-media/MadeMedia.h"

namespace demo {
namespace {

constexpr char kShare[] = "Ovirastream SHARE";
constexpr char kSdk[] = "Ovirastream SDK";
constexpr char kLumis[] = "Ovirastream LUMIS";

constexpr uint16_t kStillWidth = 1280;
constexpr uint16_t kStillHeight = 720;
constexpr uint16_t kVideoWidth = 640;
constexpr uint16_t kVideoHeight = 360;
constexpr int kFramesPerSecond = 30;
constexpr int kSecondsOfVideo = 4;

std::string Block(const Capture& capture) {
    const bool isHighlight = capture.kind == Kind::kHighlight || capture.kind == Kind::kHighlightVideo;
    std::vector<samples::BlockMember> members{{"DRSAppName", capture.game},
                                              {"DRSProfileName", capture.game},
                                              {"ShortName", capture.shortName},
                                              {"CmsId", int64_t{100448211}}};
    if (isHighlight)
        members.insert(members.end(), {{"HighlightName", capture.title},
                                       {"HighlightId", "DEMONSTRATION"},
                                       {"HighlightGroupId", "GROUP_" + capture.shortName},
                                       {"HighlightTags", int64_t{4}},
                                       {"HighlightSignificance", int64_t{2}}});
    return samples::EngravedBlock(isHighlight ? kSdk : kShare, members);
}

// A soft chord that swells and ends in silence.
double Sound(double seconds) {
    constexpr double kTurn = 6.283185307179586;
    double sum = 0;
    for (const double pitch : {220.0, 277.18, 329.63})
        sum += std::sin(kTurn * pitch * seconds);
    return 0.06 * sum * std::sin(kTurn / 2 * seconds / kSecondsOfVideo);
}

}  // namespace

std::string RelativePath(const Capture& capture) {
    const char* const ending = IsVideo(capture) ? ".mp4" : capture.kind == Kind::kHighlight ? ".png" : ".jpg";
    return capture.game + "/" + capture.title + ending;
}

std::string StillFile(const Capture& capture) {
    const Picture picture = Painter(capture.scene, kStillWidth, kStillHeight).Paint(capture.seconds);
    if (capture.kind == Kind::kHighlight)
        return samples::PngImage(picture, {samples::PngTextChunk("Software", kSdk),
                                           samples::PngTextChunk("Description", Block(capture))});
    const char* const software = capture.kind == Kind::kPhoto ? kLumis : kShare;
    return samples::JpegImage(picture, {"", "ZORVEX", "", software, capture.game, capture.game});
}

void WriteVideo(const Capture& capture, const std::string& path) {
    const Painter painter(capture.scene, kVideoWidth, kVideoHeight);
    made::Video video;
    video.width = kVideoWidth;
    video.height = kVideoHeight;
    video.frames = kFramesPerSecond * kSecondsOfVideo;
    video.moovInFront = true;
    video.tagc = Block(capture);
    video.picture = [&](int frame, uint8_t* rgb) {
        const Picture picture =
            painter.Paint(capture.seconds + static_cast<double>(frame) / kFramesPerSecond);
        std::memcpy(rgb, picture.pixels.data(), picture.pixels.size() * sizeof(Rgb));
    };
    video.sound = Sound;
    made::Write(video, path);
}

}  // namespace demo
