// Reads and builds the text of a highlights configuration; knows nothing of files and locks.
#pragma once

#include "common/json/Json.h"
#include "common/threads/HeldLog.h"
#include "libraries/share-common/HighlightsConfig.h"

// False, with `config` unchanged, when the root is not that of a configuration. A damaged definition is left
// out and logged. Of members with the same name the first counts.
bool ReadHighlightsConfig(const KXP::Value& root, HighlightConfigData& config, KXP::HeldLog& log);

// Replaces what `document` holds. Locales are written in lower case.
void WriteHighlightsConfig(const HighlightConfigData& config, KXP::Document& document);
