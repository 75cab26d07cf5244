#include "plugin-modules/Gallery/src/endpoints/GetThumbnail.h"

#include "CobalixUtil.h"
#include "common/json/JsonHelpers.h"

KXP::RetVal GetThumbnail::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const auto file = KXP::jsonGetValue<std::string>(params, "file");
        const auto width = KXP::jsonGetValue<unsigned int>(params, "width");
        const auto height = KXP::jsonGetValue<unsigned int>(params, "height");
        if (!Make(file, width, height)) KXP_LOG(KXP::LogMilestone, "GetThumbnail - Unable to get thumbnail");
        return {};
    });
}
