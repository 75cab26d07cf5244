// Changes the texts in a value of JSON.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "common/json/Json.h"

namespace host {

// `member` is the name of the member that holds the text, also of an array of texts; empty at the root.
using TextChange = std::function<std::string(std::string_view member, const std::string& text)>;

// Replaces each text, but no member's name.
void ChangeTexts(KXP::Value& value, const TextChange& change, KXP::Allocator& allocator);

// Replaces the user's home at the start of paths by "$HOME", and back, so that a recording can be played in
// another home.
std::string WithoutHome(const std::string& text);
std::string WithHome(const std::string& text);

}  // namespace host
