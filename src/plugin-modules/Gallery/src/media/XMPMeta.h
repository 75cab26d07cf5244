// A cursor over one XMP text: just enough to reach an element by its path. It is no XML parser and accepts
// anything; at a missing element the cursor stays where it was.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace media {

class XMPMeta {
  public:
    // The text is not owned.
    explicit XMPMeta(std::string_view text) : text_(text.data()), size_(text.size()), end_(text.size()) {}

    // Narrows the range to the content of the first element `tag` in it, less blanks and line feeds around.
    // Returns 0, found or not.
    int Descend(const char* tag);

    // The range with its entities decoded. Returns 0, or 1 when there is no memory for it.
    int GetCurrentString(std::string& out) const;

    // Back to the whole text.
    void Rewind() {
        start_ = 0;
        end_ = size_;
    }

  private:
    const char* text_;
    size_t size_;
    size_t start_ = 0;
    size_t end_;
};

}  // namespace media
