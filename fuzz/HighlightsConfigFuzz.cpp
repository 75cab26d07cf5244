// The text of a highlights configuration, and the names in it. What was read is written and read as the same.
#include <cstdint>
#include <cstdlib>

#include "common/json/JsonParse.h"
#include "fuzz/QuietLog.h"
#include "libraries/share-common/HighlightsConfigJson.h"

namespace {

KXP::Document Written(const HighlightConfigData& config) {
    KXP::Document document;
    WriteHighlightsConfig(config, document);
    return document;
}

// The user's choices, which no text of the fuzzer's needs to have.
void CheckWriting(const HighlightConfigData& read) {
    HighlightConfigData config = read;
    for (const int32_t choice : {-1, 0, 1}) {
        for (auto& [id, definition] : config.highlights)
            definition.userEnabled = choice;
        KXP::HeldLog log;
        HighlightConfigData again;
        if (!ReadHighlightsConfig(Written(config), again, log) || Written(again) != Written(config))
            std::abort();
        for (const auto& [id, definition] : config.highlights)
            if (again.highlights.at(id).userEnabled != choice) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    KXP::Document document;
    if (KXP::ParseJSON({reinterpret_cast<const char*>(data), size}, document).IsError()) return 0;
    KXP::HeldLog log;
    HighlightConfigData config;
    if (!ReadHighlightsConfig(document, config, log)) return 0;
    CheckWriting(config);
    for (const auto& [id, definition] : config.highlights)
        HighlightsConfig::GetLocalizedHighlightName(definition, config.shortName, config.defaultLocale);
    return 0;
}
