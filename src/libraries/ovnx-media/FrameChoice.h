// Which of a video's keyframes shows what it is about: the first that is not nearly one colour, as in a
// lead-in, or else the most varied one.
#pragma once

#include <utility>

#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

class FrameChoice {
  public:
    static constexpr int kTries = 5;

    // Whether the next keyframe should be looked at; counts it.
    bool WantsAnother();
    // Of a keyframe that could be decoded, as RGB.
    void Offer(Picture picture);
    // Throws Failure when there was none.
    Picture Take();

  private:
    int tries_ = 0;
    double most_ = -1;
    Picture best_;
};

}  // namespace ovnxmedia
