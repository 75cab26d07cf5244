// Small videos of many codecs, containers and structures, made by FFmpeg's libraries. Every frame and every
// stretch of sound differs from all others.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace made {

struct VariedSound {
    std::string encoder;
    std::string options;
    int rate = 48000;
    double start = 0;  // in seconds, as the end
    double end = 0;
};

struct VariedVideo {
    std::string encoder;
    std::string options;  // of the encoder, as "key=value:key=value"
    std::string pixels = "yuv420p";
    int width = 96;
    int height = 80;
    int frames = 60;  // at 30000/1001 a second
    int keyInterval = 15;
    int bFrames = 0;
    double start = 0;           // in seconds
    bool variableRate = false;  // frames last from a sixtieth to a tenth of a second
    int rotation = 0;           // clockwise, in degrees
    bool isHdr = false;
    std::vector<VariedSound> sounds;
    std::string format = "mp4";    // or "mov"
    std::string muxing;            // options of the muxer
    std::vector<double> chapters;  // when each begins, in seconds; their titles are numbers
    uint32_t seed = 1;
};

// Throws std::runtime_error when it cannot be made.
void Write(const VariedVideo& video, const std::string& path);

}  // namespace made
