// A JSON document for small texts: its values lie inside the object, so that parsing a block of a few
// kilobytes needs no pool from the heap. Larger texts work as well and take one.
#pragma once

#include <cstddef>

#include "common/json/Json.h"

namespace KXP {

// Meant to be a local variable. Its address must not change, because the values point into it.
class StackDocument {
  public:
    StackDocument() : pool_(buffer_, sizeof(buffer_)), document_(&pool_) {}
    StackDocument(const StackDocument&) = delete;
    StackDocument& operator=(const StackDocument&) = delete;

    Document& operator*() { return document_; }

    // For the next text. The values go.
    void Clear() {
        document_.SetNull();
        pool_.Clear();
    }

  private:
    alignas(std::max_align_t) char buffer_[8192];
    Allocator pool_;
    Document document_;
};

}  // namespace KXP
