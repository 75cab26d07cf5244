// Readers of the tables that describe a track's samples. None of them reads beyond its table's end.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "libraries/media-bytes/ByteView.h"

namespace ovnxmedia {

// The content of a track's tables, by type.
using Tables = std::map<std::string, std::string_view>;

// Each table begins with a version, flags, and a count.
constexpr size_t kTableStart = 8;

// The rows of a table that counts them; never more than there are bytes for.
class Rows {
  public:
    Rows(std::string_view content, size_t rowSize, size_t start = kTableStart)
        : view_(content), rowSize_(rowSize), start_(start) {
        const uint64_t room = view_.size() > start ? (view_.size() - start) / rowSize : 0;
        count_ = std::min<uint64_t>(view_.U32(start - 4), room);
    }

    uint64_t count() const { return count_; }
    uint32_t U32(uint64_t row, size_t at = 0) const { return view_.U32(start_ + row * rowSize_ + at); }
    uint64_t U64(uint64_t row) const { return view_.U64(start_ + row * rowSize_); }

  private:
    media::ByteView view_;
    size_t rowSize_;
    size_t start_;
    uint64_t count_ = 0;
};

// A table of values, each for a number of samples in a row. The last one holds for those that follow.
class Values {
  public:
    explicit Values(std::string_view content) : rows_(content, 8) {}

    uint32_t Next() {
        while (left_ == 0 && row_ < rows_.count()) {
            left_ = rows_.U32(row_);
            value_ = rows_.U32(row_++, 4);
        }
        if (left_ > 0) --left_;
        return value_;
    }
    bool IsOver() const { return left_ == 0 && row_ == rows_.count(); }
    // Whether one value holds for all.
    bool IsOne() const { return rows_.count() == 1; }

  private:
    Rows rows_;
    uint64_t row_ = 0;
    uint32_t left_ = 0;
    uint32_t value_ = 0;
};

// The sizes of samples, by "stsz" or "stz2".
class Sizes {
  public:
    explicit Sizes(const Tables& tables) {
        if (const auto full = tables.find("stsz"); full != tables.end()) {
            view_ = media::ByteView(full->second);
            uniform_ = view_.U32(4);
            bits_ = 32;
        } else if (const auto compact = tables.find("stz2"); compact != tables.end()) {
            view_ = media::ByteView(compact->second);
            bits_ = view_.U32(4) & 0xff;
        }
        count_ = view_.U32(8);
        if (uniform_ == 0 && bits_ > 0)
            count_ =
                std::min<uint64_t>(count_, (view_.size() - std::min<size_t>(view_.size(), 12)) * 8 / bits_);
    }

    uint64_t count() const { return count_; }
    uint32_t uniform() const { return uniform_; }
    uint32_t Of(uint64_t number) const {
        if (uniform_ != 0) return uniform_;
        if (bits_ == 32) return view_.U32(12 + number * 4);
        if (bits_ == 16) return view_.U16(12 + number * 2);
        const uint32_t byte = view_.Little(12 + number * bits_ / 8, 1);
        return bits_ == 8 ? byte : number % 2 == 0 ? byte >> 4 : byte & 15;
    }

  private:
    media::ByteView view_;
    uint32_t uniform_ = 0;
    uint32_t bits_ = 0;
    uint64_t count_ = 0;
};

}  // namespace ovnxmedia
