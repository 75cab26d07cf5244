// Reads the tables of a track that is not in fragments.
#pragma once

#include <string_view>

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/cut/Sample.h"

namespace ovnxmedia {

// The most entries that the tables of a file may make: about 12 hours of video at 60 frames with sound.
constexpr size_t kMaxSamples = 4u << 20;

// `tables` is the content of a "stbl", which must outlive the result. `isSound` allows for runs. At most
// `most` entries are made; throws Failure beyond that, and where tables contradict each other.
SampleTable ReadSampleTable(std::string_view tables, bool isSound, size_t most, const Budget& budget);

}  // namespace ovnxmedia
