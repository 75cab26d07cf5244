// The words by which the pages know what a capture is. Their schema limits them, while a file may have any
// words engraved in it: one such file must not make a whole answer break the schema.
#pragma once

#include <string_view>

// Each returns a word of the schema: the same for a known word, a replacement for the others. The results are
// static, and equal words are one.
const std::string_view& TypeForPages(std::string_view word);
const std::string_view& SubtypeForPages(std::string_view word);
const std::string_view& SourceForPages(std::string_view word);
const std::string_view& AudioTypeForPages(std::string_view word);
