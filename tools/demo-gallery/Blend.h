// Colours between two others, and numbers that look random and are always the same.
#pragma once

#include <algorithm>
#include <cstdint>

#include "sample-captures/Gradient.h"

namespace demo {

// `part` of `to`, the rest of `from`; it is cut to 0 to 1.
inline samples::Rgb Blend(samples::Rgb from, samples::Rgb to, double part) {
    const int weight = static_cast<int>(std::clamp(part, 0.0, 1.0) * 256);
    const auto mix = [weight](int a, int b) { return static_cast<uint8_t>(a + (b - a) * weight / 256); };
    return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue)};
}

// From 0 to 1.
inline double Scatter(uint32_t seed, uint32_t index) {
    uint32_t bits = seed * 0x9E3779B9u + index * 0x85EBCA6Bu;
    bits = (bits ^ bits >> 15) * 0x2C1B3C6Du;
    bits = (bits ^ bits >> 12) * 0x297A2D39u;
    return static_cast<double>(bits ^ bits >> 15) / 4294967295.0;
}

}  // namespace demo
