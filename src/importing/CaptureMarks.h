// What an import says about a capture, and the texts that say it in a file.
#pragma once

#include <string>

namespace importing {

struct CaptureMarks {
    std::string game;
    std::string highlight;  // its name; empty for an ordinary capture
};

// The software that readers take for the maker of a capture.
std::string SoftwareOf(const CaptureMarks& marks);

// The engraved block, as readers find it in pictures and videos. Throws ImportError for a text that does not
// fit.
std::string BlockOf(const CaptureMarks& marks);

}  // namespace importing
