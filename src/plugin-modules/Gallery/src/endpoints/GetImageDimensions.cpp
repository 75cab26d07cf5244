#include "plugin-modules/Gallery/src/endpoints/GetImageDimensions.h"

#include "common/json/JsonHelpers.h"
#include "plugin-modules/Gallery/src/media/ImageSize.h"

KXP::RetVal GetImageDimensions::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const std::string file = KXP::jsonGetValue<std::string>(params, "file");
        if (media::GetImageFileDimensions(file, width_, height_)) return {};
        return {KXP::Code::kInvalidArgument, "Error in opening or reading image file", 0};
    });
}

void GetImageDimensions::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    response.AddMember("width", width_, allocator);
    response.AddMember("height", height_, allocator);
}
