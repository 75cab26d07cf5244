// The catalogue of the gallery's messages: a JSON hyper-schema of draft 07 that names every request and
// notification with its fields. ApiCatalogue.json is its source; docs/api.md tells it to people.
#pragma once

#include <string_view>

// The whole text, byte for byte as in the file, in static storage and with a zero byte behind it. Any thread.
std::string_view ApiCatalogueText();
