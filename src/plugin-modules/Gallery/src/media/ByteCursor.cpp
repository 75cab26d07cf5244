#include "plugin-modules/Gallery/src/media/ByteCursor.h"

namespace media {

ByteView ByteCursor::TakeBehindWindow(size_t count) {
    windowStart_ = position_;
    windowSize_ = source_.ReadAt(position_, window_, nextWindow_);
    nextWindow_ = kNextWindow;
    const ByteView taken = ByteView({window_, windowSize_}).Sub(0, std::min(count, kMaxTake));
    cameShort_ = cameShort_ || taken.size() < count;
    position_ += taken.size();
    return taken;
}

}  // namespace media
