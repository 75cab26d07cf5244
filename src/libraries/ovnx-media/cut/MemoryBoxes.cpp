#include "libraries/ovnx-media/cut/MemoryBoxes.h"

#include <algorithm>

#include "libraries/media-bytes/Boxes.h"
#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {

void ThrowDamaged() {
    throw Failure(OVNX_MEDIA_DAMAGED, "its boxes do not fit each other");
}

std::vector<BoxView> BoxesOf(std::string_view bytes) {
    std::vector<BoxView> boxes;
    media::MemorySource source(bytes);
    media::BoxWalk walk(source, 0, bytes.size());
    while (walk.Next()) {
        const media::Box& box = walk.box();
        boxes.push_back({box.type, bytes.substr(box.offset, box.size),
                         bytes.substr(box.content(), box.size - box.headerSize)});
    }
    if (walk.end() != media::WalkEnd::Complete && walk.left() >= 8) ThrowDamaged();
    return boxes;
}

std::string_view ContentAt(std::string_view bytes, std::initializer_list<std::string_view> path) {
    for (const std::string_view type : path) {
        const std::vector<BoxView> boxes = BoxesOf(bytes);
        const auto found =
            std::find_if(boxes.begin(), boxes.end(), [type](const BoxView& box) { return box.type == type; });
        if (found == boxes.end()) return {};
        bytes = found->content;
    }
    return bytes;
}

std::string EditedBoxes(std::string_view bytes,
                        const std::function<void(const BoxView& box, std::string& out)>& edit) {
    std::string out;
    size_t end = 0;
    for (const BoxView& box : BoxesOf(bytes)) {
        edit(box, out);
        end += box.whole.size();
    }
    return out.append(bytes.substr(end));
}

void AppendNumber(std::string& out, size_t size, uint64_t value) {
    while (size-- > 0)
        out += static_cast<char>(value >> 8 * size);
}

void AppendBox(std::string& out, std::string_view type, std::string_view content) {
    const uint64_t size = content.size() + 8;
    const bool isLarge = size > UINT32_MAX;
    AppendNumber(out, 4, isLarge ? 1 : size);
    out += type;
    if (isLarge) AppendNumber(out, 8, size + 8);
    out += content;
}

void PutNumber(std::string& bytes, size_t at, size_t size, uint64_t value) {
    if (at > bytes.size() || size > bytes.size() - at) ThrowDamaged();
    if (size == 4 && value > UINT32_MAX) throw Failure(OVNX_MEDIA_OVER_LIMIT, "the clip is too long");
    while (size-- > 0)
        bytes[at++] = static_cast<char>(value >> 8 * size);
}

bool HasLongTimes(std::string_view content) {
    return content.substr(0, 1) == "\1";
}

void PutTime(std::string& content, size_t at, size_t atIfLong, int64_t time) {
    const bool isLong = HasLongTimes(content);
    PutNumber(content, isLong ? atIfLong : at, isLong ? 8 : 4,
              static_cast<uint64_t>(std::max<int64_t>(time, 0)));
}

}  // namespace ovnxmedia
