// The requests for what pages keep in the folder for temporary files.

#include <utility>

#include "common/JsonHelpers.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"
#include "plugin-modules/Gallery/src/previews/BitmapFile.h"

KXP::RetVal ZvGalleryAPI::PopulatePreviewPath(std::unique_ptr<KXP::JSONMessage> message, KXP::Value&,
                                              KXP::Allocator&) {
    queue_.AssertOnWorker();
    return KXP::RunRequest([&]() -> KXP::RetVal {
        previewPaths_.Remember(KXP::JSONGetStrings(std::as_const(*message).payload(), "paths"));
        return {};
    });
}

KXP::RetVal ZvGalleryAPI::DeletePreview(std::unique_ptr<KXP::JSONMessage> message, KXP::Value&,
                                        KXP::Allocator&) {
    queue_.AssertOnWorker();
    return KXP::RunRequest([&] {
        const KXP::Value& payload = std::as_const(*message).payload();
        return DeleteStyloraPreview(KXP::jsonGetValue<std::string>(payload, "previewFilepath"));
    });
}

KXP::RetVal ZvGalleryAPI::DeleteStyloraPreview(const std::string& path) {
    return previewPaths_.Delete(path, settings_.GetTempFolder());
}

KXP::RetVal ZvGalleryAPI::WriteEncryptedBitmap(std::unique_ptr<KXP::JSONMessage> message, KXP::Value&,
                                               KXP::Allocator&) {
    queue_.AssertOnWorker();
    return KXP::RunRequest([&] {
        const KXP::Value& payload = std::as_const(*message).payload();
        return WriteBitmapFile(KXP::jsonGetValue<std::string>(payload, "bitmapImage"),
                               settings_.GetTempFolder());
    });
}
