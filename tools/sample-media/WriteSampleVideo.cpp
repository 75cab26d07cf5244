// sample-video FILE FRAMES KEYINTERVAL: makes a capture that browsers play, of so many frames at 30 a second
// with a keyframe at each interval.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>

#include "sample-captures/EngravedBlock.h"
#include "sample-media/MadeMedia.h"

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: sample-video FILE FRAMES KEYINTERVAL\n", stderr);
        return 2;
    }
    try {
        made::Video video;
        video.width = 640;
        video.height = 360;
        video.frames = std::atoi(argv[2]);
        video.keyInterval = std::atoi(argv[3]);
        video.tagc = samples::EngravedBlock("Ovirastream SHARE", {});
        std::filesystem::copy_file(made::Path(video), argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
