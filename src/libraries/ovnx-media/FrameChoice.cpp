#include "libraries/ovnx-media/FrameChoice.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {
namespace {

// The mean distance from the mean, out of 255, below which a picture is nearly one colour: a line of text on
// black stays below.
constexpr double kNearlyOneColour = 6;

double Variety(const Picture& picture) {
    double variety = 0;
    const size_t pixels = picture.samples.size() / 3;
    for (size_t channel = 0; channel < 3; ++channel) {
        std::array<uint64_t, 256> counts{};
        uint64_t sum = 0;
        for (size_t at = channel; at < picture.samples.size(); at += 3)
            ++counts[picture.samples[at]], sum += picture.samples[at];
        const double mean = static_cast<double>(sum) / static_cast<double>(pixels);
        double distance = 0;
        for (size_t value = 0; value < counts.size(); ++value)
            distance += static_cast<double>(counts[value]) * std::abs(static_cast<double>(value) - mean);
        variety = std::max(variety, distance / static_cast<double>(pixels));
    }
    return variety;
}

}  // namespace

bool FrameChoice::WantsAnother() {
    return most_ < kNearlyOneColour && tries_++ < kTries;
}

void FrameChoice::Offer(Picture picture) {
    const double variety = Variety(picture);
    if (variety <= most_) return;
    most_ = variety;
    best_ = std::move(picture);
}

Picture FrameChoice::Take() {
    if (most_ < 0) throw Failure(OVNX_MEDIA_DAMAGED, "none of the video's keyframes can be decoded");
    return std::move(best_);
}

}  // namespace ovnxmedia
