// Lines of limited length, in whatever pieces the bytes come: the first byte is the limit, the second the
// size of a piece.
#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/Plain.h"
#include "gallery-host/base/LineSplitter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const size_t most = data[0];
    const size_t piece = data[1] + size_t{1};
    const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
    std::vector<host::LineSplitter::Line> lines;
    host::LineSplitter splitter(most, [&](const auto& line) { lines.push_back(line); });
    for (size_t at = 0; at < text.size(); at += piece)
        splitter.Feed(std::string_view(text).substr(at, piece));
    splitter.Finish();
    size_t count = 0;
    for (size_t at = 0; at < text.size(); ++count) {
        const std::string line = text.substr(at, text.find('\n', at) - at);
        plain::Demand(count < lines.size() && lines[count].number == count + 1);
        plain::Demand(lines[count].tooLong == (line.size() > most));
        plain::Demand(lines[count].text == (line.size() > most ? "" : line));
        at += line.size() + 1;
    }
    plain::Demand(lines.size() == count);
    return 0;
}
