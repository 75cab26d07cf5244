#include "gallery-host/recording/Redactor.h"

#include <algorithm>
#include <array>

#include "base/Path.h"
#include "gallery-host/recording/TextChange.h"

namespace host {
namespace {

constexpr std::array<std::string_view, 20> kKept = {
    "audiotype",
    "command",
    "date",
    "duration",
    "eventTimeStamp",
    "excludeDirectoryType",
    "fileSource",
    "fileSubType",
    "fileType",
    "line",
    "method",
    "module",
    "reference_uniqueid",
    "source_module",
    "source_system",
    "status",
    "system",
    "trackerStatus",
    "type",
    "uniqueid",
};

// Such texts carry a picture.
constexpr std::string_view kData = "data:";

}  // namespace

void Redactor::Redact(KXP::Value& message, KXP::Allocator& allocator) {
    ChangeTexts(
        message, [this](std::string_view member, const std::string& text) { return Change(member, text); },
        allocator);
}

std::string Redactor::Change(std::string_view member, const std::string& text) {
    if (text.empty() || std::find(kKept.begin(), kKept.end(), member) != kKept.end()) return text;
    const bool hasPath = text.find('/') != std::string::npos;
    // What went wrong, in the product's words, unless it names a file.
    if (member == "_return_status" && !hasPath) return text;
    if (text.compare(0, kData.size(), kData) == 0) return std::string(kData);
    return hasPath ? PathFor(text) : WordFor(text);
}

std::string Redactor::WordFor(const std::string& text) {
    const auto [entry, isNew] = words_.try_emplace(text);
    if (isNew) entry->second = "word" + std::to_string(words_.size());
    return entry->second;
}

std::string Redactor::PathFor(const std::string& path) {
    std::string changed;
    for (size_t at = 0; at <= path.size();) {
        const size_t end = std::min(path.find('/', at), path.size());
        const std::string part = path.substr(at, end - at);
        const std::string ending = KXP::LowerExtension(part);
        if (at > 0) changed += '/';
        if (!part.empty())
            changed += part == "$HOME" ? part : WordFor(part) + (ending.size() <= 5 ? ending : "");
        at = end + 1;
    }
    return changed;
}

}  // namespace host
