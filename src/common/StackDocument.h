// A JSON document for small texts: the text and its values lie inside the object, so that parsing a block of a
// few kilobytes needs nothing from the heap. Larger texts work as well and take it from there.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

#include "common/JsonParse.h"

namespace KXP {

// Meant to be a local variable. Its address must not change, because the values point into it.
class StackDocument {
  public:
    StackDocument() : pool_(values_, sizeof(values_)), document_(&pool_) {}
    StackDocument(const StackDocument&) = delete;
    StackDocument& operator=(const StackDocument&) = delete;

    // Takes a copy of the text; call it once. As KXP::ParseJSON otherwise, but a byte-order mark is an error.
    rapidjson::ParseResult Parse(std::string_view text) {
        char* copy = text_;
        if (text.size() > kTextBytes) {
            large_ = std::make_unique<char[]>(text.size() + kInsituPadding);
            copy = large_.get();
        }
        std::memcpy(copy, text.data(), text.size());
        std::memset(copy + text.size(), 0, kInsituPadding);
        return ParseJSONInsitu(copy, text.size(), document_);
    }

    Document& operator*() { return document_; }

  private:
    static constexpr size_t kTextBytes = 4096;
    static constexpr size_t kValueBytes = 4096;

    alignas(16) char text_[kTextBytes + kInsituPadding];
    std::unique_ptr<char[]> large_;
    alignas(std::max_align_t) char values_[kValueBytes];
    Allocator pool_;
    Document document_;
};

}  // namespace KXP
