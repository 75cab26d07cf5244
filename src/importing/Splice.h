// A new file as parts of another and bytes between them: how an import adds what makes a picture a capture
// without touching the picture.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace importing {

// Why a file cannot be imported, in words for the user.
class ImportError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Piece {
    std::string bytes;       // first
    uint64_t from = 0;       // follows: a part of the source
    uint64_t size = 0;       // of that part
    bool isPicture = false;  // whether that part is what decoders make the picture of
};

class Splice {
  public:
    void Add(std::string bytes) { pieces_.push_back({std::move(bytes)}); }
    // A part that continues the last one of its kind becomes one with it.
    void Copy(uint64_t from, uint64_t to, bool isPicture) {
        if (from == to) return;
        if (!pieces_.empty()) {
            Piece& last = pieces_.back();
            const bool continues = last.from + last.size == from && last.isPicture == isPicture;
            if (last.size == 0 || continues) {
                if (last.size == 0) last = {std::move(last.bytes), from, 0, isPicture};
                last.size += to - from;
                return;
            }
        }
        pieces_.push_back({"", from, to - from, isPicture});
    }

    const std::vector<Piece>& pieces() const { return pieces_; }

  private:
    std::vector<Piece> pieces_;
};

}  // namespace importing
