// Times within a video, as requests and command lines bring them, against forms without a regular expression.
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "common/text/TimeUtil.h"
#include "fuzz/Plain.h"
#include "fuzz/QuietLog.h"
#include "gallery-host/commandline/TimeText.h"

namespace {

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char c : text)
        c == separator ? void(parts.emplace_back()) : parts.back().push_back(c);
    return parts;
}

bool IsNumber(const std::string& text, size_t most) {
    return !text.empty() && text.size() <= most && text.find_first_not_of("0123456789") == std::string::npos;
}

int64_t Units(const std::string& text) {
    const std::vector<std::string> parts = Split(text, ':');
    if (parts.size() != 3 || !IsNumber(parts[0], 2) || !IsNumber(parts[1], 2)) return 0;
    const std::vector<std::string> seconds = Split(parts[2], '.');
    if (seconds.size() != 2 || !IsNumber(seconds[0], 2) || !IsNumber(seconds[1], 3)) return 0;
    const int64_t whole = (std::stoll(parts[0]) * 60 + std::stoll(parts[1])) * 60 + std::stoll(seconds[0]);
    return (whole * 1000 + std::stoll(seconds[1])) * 10000;
}

std::optional<double> Milliseconds(const std::string& text) {
    std::vector<std::string> parts = Split(text, ':');
    const std::vector<std::string> last = Split(parts.back(), '.');
    if (parts.size() > 3 || last.size() > 2 || !IsNumber(last[0], 9)) return {};
    if (last.size() == 2 && !IsNumber(last[1], 9)) return {};
    double sum = std::stod(parts.back());
    if (parts.size() > 1 && sum >= 60) return {};
    double unit = 60;
    for (size_t i = parts.size() - 1; i-- > 0; unit *= 60) {
        if (!IsNumber(parts[i], 6) || (i > 0 && std::stod(parts[i]) >= 60)) return {};
        sum += std::stod(parts[i]) * unit;
    }
    return std::round(sum * 1000);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    const std::string text(reinterpret_cast<const char*>(data), size);
    plain::Demand(KXP::HHMMSSTimeTo100ns(text.c_str()) == Units(text.c_str()));
    const std::optional<double> read = host::ReadMilliseconds(text);
    const std::optional<double> expected = Milliseconds(text);
    // The two add in different orders.
    plain::Demand(read.has_value() == expected.has_value() && (!read || std::abs(*read - *expected) <= 1));
    return 0;
}
