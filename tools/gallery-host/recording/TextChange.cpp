#include "gallery-host/recording/TextChange.h"

#include "base/Places.h"

namespace host {
namespace {

constexpr std::string_view kHome = "$HOME";

void Change(KXP::Value& value, std::string_view member, const TextChange& change, KXP::Allocator& allocator) {
    if (value.IsString()) {
        const std::string changed = change(member, std::string(value.GetString(), value.GetStringLength()));
        value.SetString(changed, allocator);
    } else if (value.IsArray()) {
        for (KXP::Value& element : value.GetArray())
            Change(element, member, change, allocator);
    } else if (value.IsObject()) {
        for (auto& [name, content] : value.GetObject())
            Change(content, {name.GetString(), name.GetStringLength()}, change, allocator);
    }
}

// Replaces `from` wherever it stands as a folder of its own.
std::string Replaced(std::string text, std::string_view from, std::string_view to) {
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
        const size_t end = at + from.size();
        if (end < text.size() && text[end] != '/' && text[end] != '\'' && text[end] != '"') {
            at = end;
            continue;
        }
        text.replace(at, from.size(), to);
        at += to.size();
    }
    return text;
}

}  // namespace

void ChangeTexts(KXP::Value& value, const TextChange& change, KXP::Allocator& allocator) {
    Change(value, {}, change, allocator);
}

std::string WithoutHome(const std::string& text) {
    return Replaced(text, KXP::Platform::HomeFolder(), kHome);
}

std::string WithHome(const std::string& text) {
    return Replaced(text, kHome, KXP::Platform::HomeFolder());
}

}  // namespace host
