#include "common/text/TextUtil.h"

#include <sstream>

#include <uuid/uuid.h>

#include "common/results/Exception.h"

namespace KXP {

std::vector<std::string> SplitString(const std::string& text, const std::string& delimiter) {
    if (delimiter.empty()) throw Exception(Code::kInvalidArgument, "Empty delimeter string", 0);
    std::vector<std::string> pieces;
    size_t from = 0;
    for (size_t at = text.find(delimiter); at != std::string::npos; at = text.find(delimiter, from)) {
        pieces.push_back(text.substr(from, at - from));
        from = at + delimiter.size();
    }
    pieces.push_back(text.substr(from));
    return pieces;
}

std::vector<std::string> SplitString(const std::string& text, char delimiter) {
    std::vector<std::string> pieces;
    std::istringstream in(text);
    for (std::string piece; std::getline(in, piece, delimiter);)
        pieces.push_back(piece);
    return pieces;
}

bool StringEndsWith(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

std::string GenerateGUID() {
    char text[kGuidLength + 1];
    GenerateGUID(text);
    return text;
}

void GenerateGUID(char (&text)[kGuidLength + 1]) {
    uuid_t id;
    uuid_generate(id);
    uuid_unparse_upper(id, text);
}

}  // namespace KXP
