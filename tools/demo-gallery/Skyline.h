// The upper edge of a range of land.
#pragma once

#include <cstdint>

#include "demo-gallery/Scene.h"

namespace demo {

// How far the land rises at `x`, from 0 to 1. Both are of the picture's height.
double RiseAt(Land land, double x, uint32_t seed);

// Whether there is a lit window of a tower; `y` is measured from the top of the picture.
bool IsWindow(double x, double y, uint32_t seed);

}  // namespace demo
