#include "plugin-modules/Gallery/src/endpoints/PreviewRequests.h"

#include <set>
#include <utility>

#include "common/json/JsonHelpers.h"
#include "plugin-modules/Gallery/src/previews/BitmapFile.h"

PreviewRequests::~PreviewRequests() {
    const std::set<std::string> previews = previewPaths_.All();
    for (const std::string& preview : previews)
        (void)DeleteStyloraPreview(preview);
}

KXP::RetVal PreviewRequests::PopulatePreviewPath(std::unique_ptr<KXP::JSONMessage> message, KXP::Value&,
                                                 KXP::Allocator&) {
    api_.AssertOnWorker();
    return KXP::RunRequest([&]() -> KXP::RetVal {
        previewPaths_.Remember(KXP::JSONGetStrings(std::as_const(*message).payload(), "paths"));
        return {};
    });
}

KXP::RetVal PreviewRequests::DeletePreview(std::unique_ptr<KXP::JSONMessage> message, KXP::Value&,
                                           KXP::Allocator&) {
    api_.AssertOnWorker();
    return KXP::RunRequest([&] {
        const KXP::Value& payload = std::as_const(*message).payload();
        return DeleteStyloraPreview(KXP::jsonGetValue<std::string>(payload, "previewFilepath"));
    });
}

KXP::RetVal PreviewRequests::DeleteStyloraPreview(const std::string& path) {
    return previewPaths_.Delete(path, api_.GetGallerySettings()->GetTempFolder());
}

KXP::RetVal PreviewRequests::WriteEncryptedBitmap(std::unique_ptr<KXP::JSONMessage> message, KXP::Value&,
                                                  KXP::Allocator&) {
    api_.AssertOnWorker();
    return KXP::RunRequest([&] {
        const KXP::Value& payload = std::as_const(*message).payload();
        return WriteBitmapFile(KXP::jsonGetValue<std::string>(payload, "bitmapImage"),
                               api_.GetGallerySettings()->GetTempFolder());
    });
}
