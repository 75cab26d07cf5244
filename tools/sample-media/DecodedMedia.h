// Videos as a player takes them: what is shown and heard, and when.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace made {

struct ShownFrame {
    double time;    // in seconds
    int number;     // as MadeMedia has painted it
    uint64_t hash;  // of the picture
};

struct Chapter {
    double start;  // in seconds
    std::string title;
};

struct Decoded {
    std::vector<ShownFrame> frames;  // of the first video track
    int hiddenAtStart = 0;           // packets that are decoded but not shown, before any is shown
    double duration = 0;             // by the file
    // Of each audio track, by the number of its stream, the first channel from time zero on.
    std::vector<std::vector<float>> sounds;
    std::vector<double> soundStarts;  // in seconds; before that the track is silent
    std::vector<int> sampleRates;
    std::vector<int> ids;  // of the tracks
    std::vector<Chapter> chapters;
    // A line for each track: its kind, and all that the file says about it apart from its frames.
    std::string tracks;
};

// Throws std::runtime_error for a file that cannot be played to its end.
Decoded Decode(const std::string& path);

}  // namespace made
