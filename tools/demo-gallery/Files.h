// The captures as files, each signed as the product signs its own.
#pragma once

#include <string>

#include "demo-gallery/Album.h"

namespace demo {

// Where a capture's file is, below the gallery's folder.
std::string RelativePath(const Capture& capture);

// The bytes of a still.
std::string StillFile(const Capture& capture);

// A video of H.264 and AAC, with its index in front. Throws std::runtime_error where FFmpeg has no encoder.
void WriteVideo(const Capture& capture, const std::string& path);

}  // namespace demo
