// What the demonstration shows: games, their captures, and how each looks.
#pragma once

#include <string>
#include <vector>

#include "demo-gallery/Scene.h"

namespace demo {

enum class Kind { kScreenshot, kPhoto, kHighlight, kVideo, kHighlightVideo };

struct Capture {
    std::string game;
    std::string shortName;  // by which its maker knows it
    std::string title;      // the file's name without its ending
    Kind kind;
    int minutesAgo;  // from the end of the album
    Scene scene;
    double seconds;  // the moment of a still, or where a video begins
};

inline bool IsVideo(const Capture& capture) {
    return capture.kind == Kind::kVideo || capture.kind == Kind::kHighlightVideo;
}

// The same on every call, no two at the same time.
std::vector<Capture> MakeAlbum();

}  // namespace demo
