// The file of kept facts: whatever bytes it holds, each whole line is read as if it stood alone, and what is
// appended is read again.
#include <vector>

#include "common/json/JsonParse.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Plain.h"
#include "fuzz/QuietLog.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptFile.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptLine.h"

namespace {

using plain::Demand;

bool ReadAlone(std::string_view line, KeptCapture& capture) {
    std::vector<char> bytes(line.begin(), line.end());
    bytes.resize(line.size() + KXP::kJsonTextSlack);
    return line.size() < kMaxKeptLine && ReadKeptLine(bytes.data(), line.size(), capture);
}

std::vector<KeptCapture> ReadEach(std::string_view text) {
    std::vector<KeptCapture> captures;
    for (size_t at = 0; at < text.size();) {
        const std::string_view line = text.substr(at, text.find('\n', at) - at);
        KeptCapture capture;
        if (ReadAlone(line, capture)) captures.push_back(capture);
        at += line.size() + 1;
    }
    return captures;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    MemoryFile file;
    file.Set(data, size);
    KeptFile::Lines lines;
    KeptFile first(file.path());
    Demand(!first.ReadNew(lines).Failed() && first.size() == size);
    const std::vector<KeptCapture> expected = ReadEach({reinterpret_cast<const char*>(data), size});
    Demand(lines.size() == expected.size());
    std::string written;
    for (size_t i = 0; i < lines.size(); ++i) {
        Demand(*lines[i].capture == expected[i]);
        written += WriteKeptLine(expected[i]);
    }
    // Appended by a second process, of which the first learns.
    KeptFile::Lines all;
    Demand(!KeptFile(file.path()).Append(written, all).Failed() && all.size() == expected.size());
    KeptFile::Lines added;
    Demand(!first.ReadNew(added).Failed() && added.size() == expected.size());
    for (size_t i = 0; i < added.size(); ++i)
        Demand(*added[i].capture == expected[i]);
    return 0;
}
