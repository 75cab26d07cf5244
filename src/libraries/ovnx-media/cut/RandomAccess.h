// Where the decoding of a video can begin, by its tables and by what its frames say themselves.
#pragma once

#include <cstddef>

#include "libraries/ovnx-media/SourceFile.h"
#include "libraries/ovnx-media/cut/AccessUnit.h"
#include "libraries/ovnx-media/cut/SourceMovie.h"

namespace ovnxmedia {

class RandomAccess {
  public:
    // All must outlive this object.
    RandomAccess(const SourceTrack& track, SourceFile& file, const Budget& budget)
        : track_(track), file_(file), budget_(budget) {}

    // The last sample from which on everything has to be decoded for `wanted` to be shown as it is in the
    // source; the first of the track when none is known. Both are indices of the table.
    size_t StartFor(size_t wanted) const;

    // Whether decoders count the picture, and would look for it if it were missing.
    bool IsCounted(size_t sample) const;

  private:
    // How the pictures after a point become whole.
    enum class Kind { None, Whole, Gradual };
    struct Point {
        Kind kind = Kind::None;
        uint32_t pictures = 0;  // after so many, if they become so gradually
    };

    Point PointAt(size_t sample) const;
    Point GroupPointAt(const Sample& sample) const;
    // False where nothing more is known of the coding.
    bool ReadPoint(const Sample& sample, Point& point) const;
    bool IsWholeBy(size_t start, uint32_t pictures, size_t wanted) const;
    NalFormat FormatOf(const Sample& sample) const;

    const SourceTrack& track_;
    SourceFile& file_;
    const Budget& budget_;
};

}  // namespace ovnxmedia
