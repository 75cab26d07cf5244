// Which samples of one track a clip takes, and which part of them it shows.
#pragma once

#include <cstdint>
#include <vector>

#include "libraries/ovnx-media/SourceFile.h"
#include "libraries/ovnx-media/cut/SourceMovie.h"

namespace ovnxmedia {

// A time on the time line of the movie, in parts of a second.
struct MovieTime {
    int64_t value;
    uint32_t unit;

    int64_t In(uint32_t otherUnit) const;
};

struct ClipTrack {
    const SourceTrack* source = nullptr;
    std::vector<Sample> samples;  // in the order of decoding
    std::vector<Edit> edits;      // from the clip's beginning on, with times of the source's media

    bool IsEmpty() const { return samples.empty(); }
    // When it has been shown to its end, in units of the track.
    int64_t End() const { return edits.empty() ? 0 : edits.back().end(); }
};

// When the frame begins that a video shows at a time: players that leave out fractions of frames would begin
// with the next one. With `atKeyframe` when the keyframe before it does. Times that no frame is shown at
// stay.
MovieTime FrameStart(const SourceTrack& video, MovieTime time, bool atKeyframe, SourceFile& file,
                     const Budget& budget);

// Chooses what is shown from `start` to before `end`, and what is needed to decode that. The result is empty
// when the track has nothing there.
ClipTrack CutTrack(const SourceTrack& track, MovieTime start, MovieTime end, SourceFile& file,
                   const Budget& budget);

}  // namespace ovnxmedia
