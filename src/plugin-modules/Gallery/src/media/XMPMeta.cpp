#include "plugin-modules/Gallery/src/media/XMPMeta.h"

#include <new>

namespace media {
namespace {

struct Entity {
    std::string_view text;
    char character;
};

constexpr Entity kEntities[] = {{"&apos;", '\''}, {"&amp;", '&'},  {"&gt;", '>'},
                                {"&lt;", '<'},    {"&quot;", '"'}, {"&#xA;", '\n'}};

bool IsBlank(char c) {
    return c == ' ' || c == '\n';
}

enum class Seek { kOpenBracket, kOpenTag, kTagEnd, kContent, kCloseBracket, kSlash, kCloseTag, kCloseEnd };

}  // namespace

bool XMPMeta::HasAt(size_t at, std::string_view text) const {
    return std::string_view(text_ + at, end_ - at).substr(0, text.size()) == text;
}

int XMPMeta::Descend(const char* tag) {
    const std::string_view name(tag);
    Seek state = Seek::kOpenBracket;
    size_t contentStart = start_;
    size_t closing = 0;
    for (size_t at = start_; at < end_;) {
        const char c = text_[at];
        size_t step = 1;
        switch (state) {
            case Seek::kOpenBracket:
                if (c == '<') state = Seek::kOpenTag;
                break;
            case Seek::kOpenTag:
                // Tested at every position: a prefix or an attribute may stand before the name.
                if (HasAt(at, name)) {
                    state = Seek::kTagEnd;
                    step = name.size();
                }
                break;
            case Seek::kTagEnd:
                if (c == '>' || c == ' ') state = Seek::kContent;
                if (c == '>') step = 0;
                break;
            case Seek::kContent:
                if (c != '>') break;
                while (at + step < end_ && IsBlank(text_[at + step]))
                    ++step;
                contentStart = at + step;
                state = Seek::kCloseBracket;
                break;
            case Seek::kCloseBracket:
                if (c != '<') break;
                closing = at;
                state = Seek::kSlash;
                break;
            case Seek::kSlash:
                state = c == '/' ? Seek::kCloseTag : Seek::kCloseBracket;
                break;
            case Seek::kCloseTag:
                state = HasAt(at, name) ? Seek::kCloseEnd : Seek::kCloseBracket;
                if (state == Seek::kCloseEnd) step = name.size();
                break;
            case Seek::kCloseEnd:
                if (c != '>') break;
                while (closing > contentStart && IsBlank(text_[closing - 1]))
                    --closing;
                start_ = contentStart;
                end_ = closing;
                return 0;
        }
        at += step;
    }
    start_ = contentStart;
    return 0;
}

int XMPMeta::GetCurrentString(std::string& out) const {
    try {
        out.clear();
        out.reserve(end_ - start_);
    } catch (const std::bad_alloc&) {
        return 1;
    }
    for (size_t at = start_; at < end_;) {
        const Entity* found = nullptr;
        for (const Entity& entity : kEntities)
            if (text_[at] == '&' && HasAt(at, entity.text)) found = &entity;
        out += found ? found->character : text_[at];
        at += found ? found->text.size() : 1;
    }
    return 0;
}

}  // namespace media
