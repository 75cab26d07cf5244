// The text of a highlights configuration, and the names in it.
#include <cstdint>

#include "common/json/JsonParse.h"
#include "fuzz/QuietLog.h"
#include "libraries/share-common/HighlightsConfigJson.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    KXP::Document document;
    if (KXP::ParseJSON({reinterpret_cast<const char*>(data), size}, document).IsError()) return 0;
    KXP::HeldLog log;
    HighlightConfigData config;
    if (!ReadHighlightsConfig(document, config, log)) return 0;
    for (const auto& [id, definition] : config.highlights)
        HighlightsConfig::GetLocalizedHighlightName(definition, config.shortName, config.defaultLocale);
    return 0;
}
