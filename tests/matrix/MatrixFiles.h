// The videos of the matrix: codecs by containers by structures.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "sample-media/VariedMedia.h"

namespace matrix {

struct File {
    made::VariedVideo video;
    std::string name;       // in words
    double soundTolerance;  // how far samples may differ from the source's
};

// The file with this number: each row of the table of video codecs in turn, all else at random.
File FileOf(unsigned number, std::mt19937& random);

// The same in each container of other recorders that takes its pictures, with those sounds that it takes.
std::vector<made::VariedVideo> InOtherContainers(const made::VariedVideo& video);

}  // namespace matrix
