// Landscapes drawn by code: a sky with its light, ranges of land that move as somebody goes by, water,
// lanterns.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "sample-captures/Gradient.h"

namespace demo {

using samples::Gradient;
using samples::Picture;
using samples::Rgb;

enum class Land { kHills, kPeaks, kMesas, kPines, kTowers };

// Lengths are parts of the picture's height, places are measured from the top left.
struct Scene {
    Land land = Land::kHills;
    Gradient ranges;  // from the farthest to the nearest
    int count = 4;    // of ranges
    double horizon = 0.55;
    Gradient sky;
    Rgb light = {255, 240, 210};
    double lightX = 1.2;
    double lightY = 0.3;
    double lightSize = 0.07;
    bool isPlanet = false;  // the light is one: shaded, with a ring
    int stars = 0;
    bool water = false;  // below the horizon, a mirror of what is above
    int lanterns = 0;    // of the light's colour
    uint32_t seed = 1;
};

// One size of a scene. What does not move is drawn once.
class Painter {
  public:
    Painter(const Scene& scene, uint16_t width, uint16_t height);

    // The scene after so many seconds.
    Picture Paint(double seconds) const;

  private:
    void DrawSky();
    void DrawStars();
    void DrawLight();
    void DrawRing();
    void DrawRange(Picture& picture, int index, double seconds) const;
    void DrawWater(Picture& picture, double seconds) const;
    void DrawLanterns(Picture& picture, double seconds) const;
    Rgb RangeColour(int index) const;

    const Scene scene_;
    Picture background_;
};

}  // namespace demo
