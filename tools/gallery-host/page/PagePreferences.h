// How somebody likes to see the page. Browsers cannot keep it: each launch clears what they stored for the
// server.
#pragma once

#include <string>

#include "common/json/Json.h"

namespace host::page {

class PagePreferences {
  public:
    // Kept in the product's share folder.
    PagePreferences();

    // Empty where nothing is kept, or nothing that can be read.
    KXP::Document Read() const;

    // Whole or not at all: an object of texts, numbers and booleans, of kMaxBytes as text. Returns what is
    // wrong, empty when it is kept.
    std::string Write(const KXP::Value& preferences) const;

    static constexpr size_t kMaxBytes = 4096;

  private:
    const std::string file_;
};

}  // namespace host::page
