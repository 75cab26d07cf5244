// The text of a highlights configuration; knows nothing of files.
#pragma once

#include "common/Json.h"
#include "libraries/share-common/HighlightsConfig.h"

// False, with `config` unchanged, when the root is not that of a configuration. A damaged definition is left
// out and logged. Of members with the same name the first counts.
bool ReadHighlightsConfig(const KXP::Value& root, HighlightConfigData& config);
