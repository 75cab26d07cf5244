#include "plugin-modules/Gallery/src/media/XMPMeta.h"

#include <algorithm>
#include <new>

#include "libraries/media-bytes/ByteView.h"

namespace media {
namespace {

constexpr std::string_view kBlanks = " \n";
constexpr size_t kNone = std::string_view::npos;

struct Entity {
    std::string_view text;
    char character;
};

constexpr Entity kEntities[] = {{"&apos;", '\''}, {"&amp;", '&'},  {"&gt;", '>'},
                                {"&lt;", '<'},    {"&quot;", '"'}, {"&#xA;", '\n'}};

const Entity* FindEntity(ByteView text) {
    for (const Entity& entity : kEntities)
        if (text.StartsWith(entity.text)) return &entity;
    return nullptr;
}

// The "<" of the closing tag at or after `from`. A tag without a ">" is none.
size_t FindClosingTag(std::string_view range, std::string_view name, size_t from) {
    const ByteView view(range);
    size_t at = range.find('<', from);
    while (at != kNone) {
        const bool closes = view.HasAt(at + 1, "/");
        if (closes && view.HasAt(at + 2, name))
            return range.find('>', at + 2 + name.size()) == kNone ? kNone : at;
        // The characters compared are consumed: a "<" right after a "<" opens nothing.
        at = range.find('<', at + (closes ? 3 : 2));
    }
    return kNone;
}

}  // namespace

int XMPMeta::Descend(const char* tag) {
    const std::string_view name(tag);
    const std::string_view range(text_, end_);
    size_t at = range.find('<', start_);
    // Anywhere after the bracket: the name may have a prefix.
    if (at != kNone) at = range.find(name, at + 1);
    if (at != kNone) at = range.find('>', at + name.size());
    if (at == kNone) return 0;
    start_ = std::min(range.find_first_not_of(kBlanks, at + 1), end_);

    size_t end = FindClosingTag(range, name, start_);
    if (end == kNone) return 0;
    while (end > start_ && kBlanks.find(text_[end - 1]) != kNone)
        --end;
    end_ = end;
    return 0;
}

int XMPMeta::GetCurrentString(std::string& out) const {
    try {
        out.clear();
        out.reserve(end_ - start_);
    } catch (const std::bad_alloc&) {
        return 1;
    }
    const ByteView range({text_ + start_, end_ - start_});
    for (size_t at = 0; at < range.size();) {
        const Entity* entity = FindEntity(range.Sub(at));
        out += entity ? entity->character : range.text()[at];
        at += entity ? entity->text.size() : 1;
    }
    return 0;
}

}  // namespace media
