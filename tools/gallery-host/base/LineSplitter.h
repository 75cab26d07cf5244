// Splits bytes into lines of limited length.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace host {

class LineSplitter {
  public:
    struct Line {
        size_t number;  // from 1
        bool tooLong;   // then `text` is empty
        std::string text;
    };
    using Consumer = std::function<void(const Line&)>;

    // Lines longer than `maxBytes` are skipped and reported as too long.
    LineSplitter(size_t maxBytes, Consumer consumer) : maxBytes_(maxBytes), consumer_(std::move(consumer)) {}

    void Feed(std::string_view bytes);
    // Hands out what follows the last line end.
    void Finish();

  private:
    void Append(std::string_view bytes);
    void EndLine();

    const size_t maxBytes_;
    const Consumer consumer_;
    size_t number_ = 1;
    bool tooLong_ = false;
    std::string line_;
};

}  // namespace host
