// Bytes of a tracker's file, read into records and written; what was written reads and writes the same, by
// either reader. The bytes also stand as a caption, which a picture may bring along.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "common/json/JsonParse.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/QuietLog.h"
#include "plugin-modules/Gallery/src/tracker/record/OwnLayout.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

namespace {

bool Read(std::string_view text, TrackerContent& content) {
    KXP::Document document;
    const KXP::ElementReader records = ParseUGCFromJSON(content.ugc);
    if (KXP::ParseJSON(text, document, &records).IsError()) return false;
    ParseTrackerInfoFromJSON(document, content.info);
    return !ParseUGCGamesFromJSON(document, content.games).Failed();
}

std::string Written(const TrackerContent& content) {
    KXP::JsonBuffer buffer;
    KXP::PrettyJsonWriter writer(buffer);
    writer.SetIndent('\t', 1);
    WriteTrackerJSON(content, writer);
    return {buffer.GetString(), buffer.GetSize()};
}

// What the reader of our own layout takes is what the parser reads.
bool ReadDirectly(std::string_view text, TrackerContent& content) {
    static MemoryFile file;
    file.Set(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    KXP::Document rest;
    if (!ReadOwnLayout(file.fd(), content.ugc, rest)) return false;
    ParseTrackerInfoFromJSON(rest, content.info);
    return !ParseUGCGamesFromJSON(rest, content.games).Failed();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    TrackerContent content;
    const bool isRead = Read(bytes, content);
    TrackerContent direct;
    if (ReadDirectly(bytes, direct) && (!isRead || Written(direct) != Written(content))) std::abort();
    content.ugc.emplace_back(std::make_shared<TrackedUGC>())->topBarText = bytes;
    const std::string text = Written(content);
    TrackerContent again;
    if (!Read(text, again) || Written(again) != text) std::abort();
    direct = {};
    if (!ReadDirectly(text, direct) || Written(direct) != text) std::abort();
    return 0;
}
