// Videos made by FFmpeg's libraries, for tests to take apart. Each frame shows its own number, and colours in
// its corners that tell which way up it is.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace made {

// At 30 frames a second, its picture in French.
struct Video {
    int width = 320;
    int height = 180;
    int frames = 60;
    int keyInterval = 30;
    int bFrames = 2;
    bool hasVideo = true;
    int blackFrames = 0;  // at the beginning, with no number
    int rotation = 0;     // clockwise, in degrees, that players turn it by
    bool fullRange = false;
    bool namesMatrix = false;  // that of BT.709, which unnamed goes with a height from 720 on
    int pixelWidth = 1;        // against a height of 1
    int64_t bitRate = 0;       // with noise that takes it up, for large files; 0: as small as it gets
    int repeat = 1;            // all the frames again, numbers included
    const char* codec = "libx264";
    const char* format = "mp4";  // or "matroska"; what follows is for MP4 alone
    bool moovInFront = false;
    std::vector<std::string> audioLanguages = {"und"};  // one track of AAC for each
    std::string creationTime;                           // ISO 8601, in UTC
    std::string tagc;                                   // the content of moov/udta/tagc

    // Instead of numbers and colours: fills RGB rows without padding for the frame.
    std::function<void(int frame, uint8_t* rgb)> picture;
    // Instead of a tone: the loudness at a time, of -1 to 1.
    std::function<double(double seconds)> sound;
};

// Makes such a file. Throws std::runtime_error on failure.
void Write(const Video& video, const std::string& path);

// Makes such a file and returns its path; it is removed at the end of the process.
std::string Path(const Video& video);

// What a decoded frame shows, from RGB rows without padding.
struct Shown {
    int number;           // -1 when none can be read, as in a black frame
    std::string corners;  // top left, top right, bottom left, bottom right, of "rgbw" and '.' for others
};
Shown Look(const uint8_t* rgb, int width, int height);

}  // namespace made
