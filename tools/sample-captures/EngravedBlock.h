// The text that a capture tool engraves into a file: what made it, and for which game. It is written here on
// its own, so that the product's reader is held against a second hand.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace samples {

struct BlockMember {
    std::string name;
    std::variant<std::string, int64_t> value;
};

// {"Source":...,"B64":...}, where B64 is the base64 of an object of `members` in their order. Texts are
// UTF-8.
std::string EngravedBlock(std::string_view source, const std::vector<BlockMember>& members);

// The standard alphabet, padded, no line breaks. RFC 4648, section 4.
std::string Base64(std::string_view bytes);

}  // namespace samples
