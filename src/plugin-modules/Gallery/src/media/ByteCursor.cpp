#include "plugin-modules/Gallery/src/media/ByteCursor.h"

namespace media {

ByteView ByteCursor::TakeBehindWindow(size_t count) {
    windowStart_ = position_;
    count = std::min(count, kMaxTake);
    windowSize_ = source_.ReadAt(position_, window_, std::max(count, nextWindow_));
    nextWindow_ = kNextWindow;
    const ByteView taken = ByteView({window_, windowSize_}).Sub(0, count);
    cameShort_ = cameShort_ || taken.size() < count;
    position_ += taken.size();
    return taken;
}

}  // namespace media
