#include "libraries/media-bytes/Boxes.h"

#include <utility>

#include "libraries/media-bytes/ByteView.h"

namespace media {

bool BoxWalk::Next() {
    constexpr uint64_t kHeader = 8;
    constexpr uint64_t kLongHeader = 16;
    if (left() == 0) return Stop(WalkEnd::Complete);
    char bytes[kLongHeader];
    const ByteView header = ByteView({bytes, source_.ReadAt(position_, bytes, sizeof(bytes))}).Sub(0, left());
    if (header.size() < kHeader) return Stop(WalkEnd::CutOff);
    if (count_ == kMaxBoxes) return Stop(WalkEnd::TooMany);
    Box box{header.Sub(4, 4).str(), position_, header.U32(0)};
    box.isOpen = box.size == 0;
    if (box.isOpen) box.size = left();
    if (box.size == 1) {
        if (header.size() < kLongHeader) return Stop(WalkEnd::CutOff);
        box.headerSize = kLongHeader;
        box.size = header.U64(8);
    }
    if (box.size < box.headerSize) return Stop(WalkEnd::Malformed);
    if (box.size > left()) return Stop(WalkEnd::CutOff);
    position_ += box.size;
    ++count_;
    box_ = std::move(box);
    return true;
}

std::string BoxHeader(uint64_t size, std::string_view type) {
    std::string header;
    for (int shift = 24; shift >= 0; shift -= 8)
        header += static_cast<char>(size >> shift & 0xff);
    return header.append(type);
}

}  // namespace media
