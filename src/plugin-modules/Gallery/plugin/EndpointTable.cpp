// The handlers of requests and of other modules' notifications. A row here and an entry in the catalogue make
// an endpoint.

#include "plugin-modules/Gallery/plugin/GalleryPlugin.h"
#include "plugin-modules/Gallery/src/endpoints/DriveTasks.h"
#include "plugin-modules/Gallery/src/endpoints/FileTransfer.h"
#include "plugin-modules/Gallery/src/endpoints/GetEventData.h"
#include "plugin-modules/Gallery/src/endpoints/GetFolderCRC.h"
#include "plugin-modules/Gallery/src/endpoints/GetFolderListing.h"
#include "plugin-modules/Gallery/src/endpoints/GetImageDimensions.h"
#include "plugin-modules/Gallery/src/endpoints/GetMetaData.h"
#include "plugin-modules/Gallery/src/endpoints/GetThumbnail.h"
#include "plugin-modules/Gallery/src/endpoints/MontageTasks.h"
#include "plugin-modules/Gallery/src/endpoints/Remove.h"
#include "plugin-modules/Gallery/src/endpoints/TranscodeMediaFile.h"
#include "plugin-modules/Gallery/src/endpoints/UGCTasks.h"
#include "plugin-modules/Gallery/src/endpoints/VideoTasks.h"

// Looks the API object up for each request, since the table outlives it.
template <typename Task>
void GalleryPlugin::RegisterTask(const std::string& name) {
    RegisterAsyncTask(name, [this](KXP::PluginModuleBase& module, std::unique_ptr<KXP::JSONMessage> request) {
        return Task::Launch(module, std::move(request), api_);
    });
}

void GalleryPlugin::RegisterEndpoints() {
    auto& [settings, highlights, previews, montages] = *requests_;
    RegisterTask<GetFolderListing>("GetFolderListing");
    RegisterTask<GetAppStats>("GetAppStats");
    RegisterTask<GetAppUGC>("GetAppUGC");
    RegisterTask<Remove>("RemoveGalleryItem");
    RegisterTask<GetMetaData>("GetFileMetadata");
    RegisterTask<GetThumbnail>("GetThumbnail");
    RegisterTask<EnumerateDrives>("EnumerateDrives");
    RegisterTask<GetImageDimensions>("GetImageFileDimensions");
    RegisterTask<GetFolderCRC>("GetFolderCRC");
    RegisterTask<GalleryCopyFile>("CopyFile");
    RegisterTask<GalleryMoveFile>("MoveFile");
    RegisterTask<IsDirectoryWritable>("IsDirectoryWriteable");
    RegisterTask<GetDriveInfo>("GetDriveInfo");
    RegisterTask<GetRecentUGC>("GetRecentUGC");
    RegisterTask<GetEventData>("GetEventData");
    RegisterSyncMethod("GetSettings", &settings, &SettingsRequests::GetSettings);
    RegisterSyncMethod("SetSettings", &settings, &SettingsRequests::SetSettings);
    RegisterSyncMethod("CancelPathUpdate", &settings, &SettingsRequests::CancelPathUpdate);
    RegisterSyncMethod("CheckDiskSpace", &settings, &SettingsRequests::CheckDiskSpace);
    RegisterSyncMethod("EnqueuePendingHighlight", &highlights, &HighlightRequests::EnqueuePendingHighlight);
    RegisterSyncMethod("OpenHighlightsGroupSummary", &highlights,
                       &HighlightRequests::OpenHighlightsGroupSummary);
    RegisterSyncMethod("GetHighlightsCount", &highlights, &HighlightRequests::GetHighlightsCount);
    RegisterSyncMethod("DeleteGroupHighlights", &highlights, &HighlightRequests::DeleteGroupHighlights);
    RegisterSyncMethod("WriteEncryptedBitmap", &previews, &PreviewRequests::WriteEncryptedBitmap);
    RegisterSyncMethod("DeletePreview", &previews, &PreviewRequests::DeletePreview);
    RegisterSyncMethod("PreviewPathInfo", &previews, &PreviewRequests::PopulatePreviewPath);
    RegisterSyncMethod("GetMontageCloudConfig", &montages, &MontageRequests::GetMontageCloudConfig);
    RegisterTask<TranscodeMediaFile>("TranscodeMediaFile");
    RegisterSyncMethod("CancelMontage", &montages, &MontageRequests::CancelMontage);
    RegisterTask<CreateMontage>("CreateMontage");
    RegisterTask<CreateMontageFromRecipe>("CreateMontageFromRecipe");
    RegisterTask<TrimVideo>("Trim");
    RegisterTask<AddMeme>("AddMeme");
    RegisterTask<EngraveMP4>("EngraveMP4");
    RegisterSyncMethod("UpdateMontageProgress", &montages, &MontageRequests::UpdateMontageProgress);
}

void GalleryPlugin::SubscribeToCaptures() {
    const auto listen = [this](const char* module, const char* notification,
                               void (ZvGalleryAPI::*handler)(std::unique_ptr<KXP::JSONMessage>)) {
        RegisterNotificationSyncMethod("CobalixNative", module, notification, api_.get(), handler);
    };
    listen("ShareServer", "HighlightSavedNotification", &ZvGalleryAPI::OnHighlightSaved);
    listen("ShareServer", "HighlightCaptureFailureNotification", &ZvGalleryAPI::OnHighlightCaptureFailed);
    listen("ShareServer", "CaptureSavedNotification", &ZvGalleryAPI::OnCaptureSaved);
    listen("ZvCamera", "LumisShotSavedNotification", &ZvGalleryAPI::OnCaptureSaved);
}
