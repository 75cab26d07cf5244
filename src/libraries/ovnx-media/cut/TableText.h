// Tables of a track as a file has them, while they are written.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "libraries/ovnx-media/cut/MemoryBoxes.h"

namespace ovnxmedia {

// A complete table: a version, flags, the number of its rows, and the rows.
inline void AppendTable(std::string& out, std::string_view type, uint32_t versionAndFlags, uint64_t count,
                        std::string_view rows) {
    std::string content;
    AppendNumber(content, 4, versionAndFlags);
    AppendNumber(content, 4, count);
    AppendBox(out, type, content.append(rows));
}

// Rows that each have a number of samples and a value that they share.
class RunRows {
  public:
    void Add(uint32_t count, uint32_t value) {
        if (count_ > 0 && value == value_) {
            count_ += count;
        } else {
            Flush();
            count_ = count;
            value_ = value;
        }
    }
    void AppendTo(std::string& out, std::string_view type, uint32_t versionAndFlags) {
        Flush();
        AppendTable(out, type, versionAndFlags, rows_.size() / kRow, rows_);
    }
    void AppendTo(std::string& out) {
        Flush();
        AppendNumber(out, 4, rows_.size() / kRow);
        out += rows_;
    }
    // Complete when nothing was added after Finish.
    void Finish() { Flush(); }
    const std::string& rows() const { return rows_; }

    static constexpr size_t kRow = 8;

  private:
    void Flush() {
        if (count_ == 0) return;
        AppendNumber(rows_, 4, count_);
        AppendNumber(rows_, 4, value_);
        count_ = 0;
    }

    std::string rows_;
    uint64_t count_ = 0;
    uint32_t value_ = 0;
};

}  // namespace ovnxmedia
