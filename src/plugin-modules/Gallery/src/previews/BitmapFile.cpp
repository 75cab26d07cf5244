#include "plugin-modules/Gallery/src/previews/BitmapFile.h"

#include "CobalixUtil.h"
#include "base/NewFile.h"
#include "base/ReadWrite.h"
#include "common/text/Base64.h"
#include "plugin-modules/Gallery/src/media/ImageSize.h"

namespace {

constexpr const char* kBitmapFileName = "ZvBitmap.bmp";

bool IsBitmap(std::string_view bytes) {
    media::MemorySource source(bytes);
    media::ImageSize size;
    return bytes.substr(0, 2) == "BM" && media::ReadImageSize(source, size);
}

}  // namespace

KXP::RetVal WriteBitmapFile(std::string_view base64, const std::string& folder) {
    std::string bytes;
    if (!KXP::DecodeBase64(base64, bytes) || !IsBitmap(bytes))
        return {KXP::Code::kInvalidData, "The image is no bitmap in base64", 0};
    KXP::NewFile file(folder + "/" + kBitmapFileName);
    if (!file.IsOpen() || !KXP::WriteFullyAt(file.descriptor(), bytes.data(), bytes.size(), 0) ||
        !file.PutOver())
        return {KXP::Code::kFailure, "Failed to write the bitmap", 0};
    KXP_LOG(KXP::LogMilestone, "BMP Decrypted");
    return {};
}
