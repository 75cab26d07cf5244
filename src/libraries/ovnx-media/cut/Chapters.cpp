#include "libraries/ovnx-media/cut/Chapters.h"

#include <algorithm>
#include <vector>

#include "libraries/ovnx-media/cut/MemoryBoxes.h"

namespace ovnxmedia {
namespace {

struct Chapter {
    uint64_t start;
    std::string_view title;
};

// The content of a "chpl" with the chapters of the clip; empty when it has none. One that does not fit its
// own counts stays as it is.
std::string EditedList(std::string_view list, uint64_t start, uint64_t end) {
    const media::ByteView view(list);
    const size_t countAt = view.StartsWith(std::string_view("\0", 1)) ? 4 : 8;
    std::vector<Chapter> chapters;
    uint64_t at = countAt + 1;
    for (uint32_t left = view.Little(countAt, 1); left > 0; --left) {
        const uint64_t titleSize = view.Little(at + 8, 1);
        const media::ByteView title = view.Sub(at + 9, titleSize);
        if (at + 9 > list.size() || title.size() < titleSize) return std::string(list);
        const uint64_t time = view.U64(at);
        at += 9 + titleSize;
        if (time >= end) continue;
        // The clip begins within the last chapter that begins by then.
        if (time <= start) chapters.clear();
        chapters.push_back({time - std::min(time, start), title.text()});
    }
    if (chapters.empty()) return {};
    std::string content(list.substr(0, countAt));
    AppendNumber(content, 1, chapters.size());
    for (const Chapter& chapter : chapters) {
        AppendNumber(content, 8, chapter.start);
        AppendNumber(content, 1, chapter.title.size());
        content += chapter.title;
    }
    return content;
}

}  // namespace

std::string WithChaptersOf(std::string_view userData, uint64_t start, uint64_t end) {
    // What has none need not consist of boxes.
    if (userData.find("chpl") == userData.npos) return std::string(userData);
    return EditedBoxes(userData, [start, end](const BoxView& box, std::string& out) {
        if (box.type != "chpl") {
            out += box.whole;
            return;
        }
        const std::string list = EditedList(box.content, start, end);
        if (!list.empty()) AppendBox(out, box.type, list);
    });
}

}  // namespace ovnxmedia
