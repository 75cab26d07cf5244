#include "gallery-host/commandline/TimeText.h"

#include <cmath>
#include <regex>

namespace host {

std::optional<double> ReadMilliseconds(const std::string& text) {
    // The number of digits is limited so that no sum overflows.
    static const std::regex form(R"((?:(?:(\d{1,6}):)?(\d{1,6}):)?(\d{1,9}(?:\.\d{1,9})?))");
    std::smatch parts;
    if (!std::regex_match(text, parts, form)) return std::nullopt;
    const auto part = [&](size_t index) { return parts[index].matched ? std::stod(parts[index]) : 0; };
    if (parts[1].matched && part(2) >= 60) return std::nullopt;
    if (parts[2].matched && part(3) >= 60) return std::nullopt;
    return std::round(((part(1) * 60 + part(2)) * 60 + part(3)) * 1000);
}

}  // namespace host
