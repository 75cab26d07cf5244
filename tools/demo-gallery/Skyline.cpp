#include "demo-gallery/Skyline.h"

#include <cmath>

#include "demo-gallery/Blend.h"

namespace demo {
namespace {

constexpr double kPineWidth = 0.035;
constexpr double kTowerWidth = 0.085;
constexpr double kWindow = 0.0135;

uint32_t Cell(double x, double width) {
    return static_cast<uint32_t>(static_cast<int32_t>(std::floor(x / width)));
}

// 0 at both ends of each period, 1 in the middle.
double Tooth(double x) {
    return 1 - std::abs(2 * (x - std::floor(x)) - 1);
}

// Several waves, of which each is shorter and lower than the one before.
template <typename Wave>
double Sum(double x, uint32_t seed, int waves, const Wave& wave) {
    double sum = 0;
    double total = 0;
    double size = 1;
    for (uint32_t i = 0; i < static_cast<uint32_t>(waves); ++i, size *= 0.47) {
        sum += size * wave(x / size * (0.8 + 0.5 * Scatter(seed, i)) + 7 * Scatter(seed, i + 50));
        total += size;
    }
    return sum / total;
}

double Hills(double x, uint32_t seed) {
    return Sum(x, seed, 4, [](double at) { return 0.5 + 0.5 * std::sin(at * 3.3); });
}

double Peaks(double x, uint32_t seed) {
    return Sum(x, seed, 6, Tooth);
}

// Flat tops with steep sides.
double Mesas(double x, uint32_t seed) {
    const double rise = Hills(x * 1.4, seed);
    return 0.75 * std::clamp((rise - 0.5) * 9, 0.0, 1.0) + 0.15 * std::clamp((rise - 0.38) * 12, 0.0, 1.0) +
           0.1 * Peaks(x, seed);
}

double Pines(double x, uint32_t seed) {
    const double height = 0.25 + 0.3 * Scatter(seed, Cell(x, kPineWidth));
    return 0.5 * Hills(x, seed) + height * std::pow(Tooth(x / kPineWidth), 1.4);
}

double Towers(double x, uint32_t seed) {
    const uint32_t cell = Cell(x, kTowerWidth);
    const double inside = x / kTowerWidth - std::floor(x / kTowerWidth);
    const double height = 0.15 + 0.85 * std::pow(Scatter(seed, cell), 1.6);
    const bool hasMast = Scatter(seed, cell + 900) > 0.75;
    return height + (hasMast && std::abs(inside - 0.5) < 0.03 ? 0.12 : 0) - (inside > 0.93 ? 0.12 : 0);
}

}  // namespace

double RiseAt(Land land, double x, uint32_t seed) {
    switch (land) {
        case Land::kPeaks:
            return Peaks(x, seed);
        case Land::kMesas:
            return Mesas(x, seed);
        case Land::kPines:
            return Pines(x, seed);
        case Land::kTowers:
            return Towers(x, seed);
        case Land::kHills:
            break;
    }
    return Hills(x, seed);
}

bool IsWindow(double x, double y, uint32_t seed) {
    const double across = x / kWindow - std::floor(x / kWindow);
    const double down = y / kWindow - std::floor(y / kWindow);
    return across > 0.25 && across < 0.75 && down > 0.2 && down < 0.8 &&
           Scatter(seed, Cell(x, kWindow) * 631 + Cell(y, kWindow)) > 0.68;
}

}  // namespace demo
