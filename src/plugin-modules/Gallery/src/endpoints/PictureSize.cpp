#include "plugin-modules/Gallery/src/endpoints/PictureSize.h"

#include <stdexcept>
#include <string>

#include "common/json/JsonHelpers.h"

unsigned int ReadSide(const KXP::Value& params, const char* key, const char* name) {
    if (!KXP::jsonObjectHasKey(params, key, false)) return 0;
    const auto pixels = KXP::jsonGetValue<unsigned int>(params, key);
    if (pixels == 0) throw std::invalid_argument('"' + std::string(name) + "\" should be a positive integer");
    return pixels;
}
