// The text of a highlights configuration: read, asked, written and read again.
#include <cstdint>
#include <cstdlib>

#include "common/JsonParse.h"
#include "fuzz/QuietLog.h"
#include "libraries/share-common/HighlightsConfigJson.h"

namespace {

bool Same(const HighlightDefinition& a, const HighlightDefinition& b) {
    return a.id == b.id && a.userInterest == b.userInterest && a.userEnabled == b.userEnabled &&
           a.highlightTags == b.highlightTags && a.significance == b.significance;
}

// Names apart, for two locales may become one.
bool Same(const HighlightConfigData& a, const HighlightConfigData& b) {
    if (a.defaultLocale != b.defaultLocale || a.drsName != b.drsName || a.profileName != b.profileName ||
        a.shortName != b.shortName || a.highlights.size() != b.highlights.size())
        return false;
    for (const auto& [id, definition] : a.highlights) {
        const auto found = b.highlights.find(id);
        if (found == b.highlights.end() || !Same(definition, found->second)) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    KXP::Document document;
    if (KXP::ParseJSON({reinterpret_cast<const char*>(data), size}, document).IsError()) return 0;
    KXP::HeldLog log;
    HighlightConfigData config;
    if (!ReadHighlightsConfig(document, config, log)) return 0;
    Highlight highlight;
    for (const auto& [id, definition] : config.highlights) {
        HighlightsConfig::GetLocalizedHighlightName(definition, config.shortName, config.defaultLocale);
        HighlightsConfig::GetHighlightTemplate(config, highlight, id);
    }
    KXP::Document written;
    WriteHighlightsConfig(config, written);
    HighlightConfigData again;
    if (!ReadHighlightsConfig(written, again, log) || !Same(config, again)) std::abort();
    return 0;
}
