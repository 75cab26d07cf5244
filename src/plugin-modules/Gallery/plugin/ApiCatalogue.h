// The catalogue of the gallery's messages: a JSON hyper-schema of draft 07 that names every request and
// notification with its fields. ApiCatalogue.json is its source; docs/api.md is made from it for readers.
#pragma once

#include <string_view>

// The whole text, byte for byte as in the file, in static storage and followed by a zero byte. Any thread.
std::string_view ApiCatalogueText();
