// Takes out of messages what says something about a person: names, texts and places.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "common/json/Json.h"

namespace host {

// The same text becomes the same word each time, so that one still sees what belongs together.
class Redactor {
  public:
    // Keeps numbers, and texts of members that hold words of the product alone.
    void Redact(KXP::Value& message, KXP::Allocator& allocator);

  private:
    std::string Change(std::string_view member, const std::string& text);
    std::string WordFor(const std::string& text);
    // Each part of the path on its own, with the ending of its name.
    std::string PathFor(const std::string& path);

    std::map<std::string, std::string> words_;
};

}  // namespace host
