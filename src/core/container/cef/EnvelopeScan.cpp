#include "core/container/cef/EnvelopeScan.h"

#include <algorithm>
#include <utility>

#include "common/message/Message.h"

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// A position in a text. What is malformed reads as the end of the text.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool AtEnd() const { return rest_.empty(); }
    char Take() {
        if (rest_.empty()) return '\0';
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }
    // The next character that is no blank and in no comment; it stays.
    char Peek() {
        while (!rest_.empty()) {
            const char c = rest_.front();
            if (c == '/') {
                SkipComment();
            } else if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
                rest_.remove_prefix(1);
            } else {
                return c;
            }
        }
        return '\0';
    }

    // After its first quote.
    std::string_view TakeString() {
        size_t end = 0;
        while (end < rest_.size() && rest_[end] != '"')
            end += rest_[end] == '\\' ? 2 : 1;
        if (end >= rest_.size()) return End();
        const std::string_view text = rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
        return text;
    }

    // A value of any kind; the text of a string or a number.
    std::string_view TakeValue() {
        const char first = Peek();
        if (first == '"') {
            Take();
            return TakeString();
        }
        if (first == '{' || first == '[') return SkipNested();
        const size_t size = std::min(rest_.find_first_of(",}] \t\r\n/"), rest_.size());
        const std::string_view text = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return text;
    }

  private:
    std::string_view End() {
        rest_ = {};
        return {};
    }
    void SkipComment() {
        const std::string_view end = rest_.substr(0, 2) == "/*" ? "*/" : "\n";
        const size_t at = rest_.find(end, 2);
        at == std::string_view::npos ? static_cast<void>(End()) : rest_.remove_prefix(at + end.size());
    }
    std::string_view SkipNested() {
        size_t depth = 0;
        do {
            const char c = Peek();
            Take();
            if (c == '"') TakeString();
            if (c == '{' || c == '[') ++depth;
            if (c == '}' || c == ']') --depth;
        } while (depth > 0 && !AtEnd());
        return {};
    }

    std::string_view rest_;
};

std::string_view* NameOf(std::string_view key, EnvelopeNames& names) {
    const std::pair<std::string_view, std::string_view*> rows[] = {
        {"system", &names.system},
        {"module", &names.module},
        {"method", &names.method},
        {"uniqueid", &names.uniqueid},
        {"source_system", &names.sourceSystem},
        {"source_module", &names.sourceModule},
        {"reference_uniqueid", &names.referenceUniqueid},
    };
    for (const auto& [name, value] : rows)
        if (name == key) return value;
    return nullptr;
}

}  // namespace

bool ScanEnvelope(std::string_view json, EnvelopeNames& names) noexcept {
    if (json.substr(0, kUtf8Mark.size()) == kUtf8Mark) json.remove_prefix(kUtf8Mark.size());
    Scanner text(json);
    if (text.Peek() != '{') return false;
    bool persistent = false;
    do {
        text.Take();
        if (text.Peek() != '"') break;
        text.Take();
        const std::string_view key = text.TakeString();
        if (text.Peek() != ':') return false;
        text.Take();
        const bool isString = text.Peek() == '"';
        const std::string_view value = text.TakeValue();
        std::string_view* const name = NameOf(key, names);
        if (name && isString && name->empty()) *name = value;
        persistent |= key == "type" && value == "3073";
    } while (text.Peek() == ',');
    const bool isWhole = text.Peek() == '}' && !names.method.empty() && !names.uniqueid.empty() &&
                         !names.system.empty() && !names.module.empty();
    return isWhole && !persistent && names.referenceUniqueid.empty() &&
           !KXP::Message::IsAnnouncement(names.method);
}
