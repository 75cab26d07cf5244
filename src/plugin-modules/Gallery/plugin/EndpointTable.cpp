// Which request runs what, and who hears of captures. A row here and an entry in the catalogue make an
// endpoint.

#include "plugin-modules/Gallery/plugin/GalleryPlugin.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"
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

// The API object is looked up for each request: a task that comes without one fails.
template <typename Task>
void GalleryPlugin::RegisterTask(const std::string& name) {
    RegisterAsyncTask(name, [this](KXP::PluginModuleBase& module, std::unique_ptr<KXP::JSONMessage> request) {
        return Task::Launch(module, std::move(request), api_);
    });
}

void GalleryPlugin::RegisterEndpoints() {
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
    RegisterSyncMethod("GetSettings", api_.get(), &ZvGalleryAPI::GetSettings);
    RegisterSyncMethod("SetSettings", api_.get(), &ZvGalleryAPI::SetSettings);
    RegisterSyncMethod("CancelPathUpdate", api_.get(), &ZvGalleryAPI::CancelPathUpdate);
    RegisterSyncMethod("CheckDiskSpace", api_.get(), &ZvGalleryAPI::CheckDiskSpace);
    RegisterSyncMethod("EnqueuePendingHighlight", api_.get(), &ZvGalleryAPI::EnqueuePendingHighlight);
    RegisterSyncMethod("OpenHighlightsGroupSummary", api_.get(), &ZvGalleryAPI::OpenHighlightsGroupSummary);
    RegisterSyncMethod("GetHighlightsCount", api_.get(), &ZvGalleryAPI::GetHighlightsCount);
    RegisterSyncMethod("DeleteGroupHighlights", api_.get(), &ZvGalleryAPI::DeleteGroupHighlights);
    RegisterSyncMethod("WriteEncryptedBitmap", api_.get(), &ZvGalleryAPI::WriteEncryptedBitmap);
    RegisterSyncMethod("DeletePreview", api_.get(), &ZvGalleryAPI::DeletePreview);
    RegisterSyncMethod("PreviewPathInfo", api_.get(), &ZvGalleryAPI::PopulatePreviewPath);
    RegisterSyncMethod("GetMontageCloudConfig", api_.get(), &ZvGalleryAPI::GetMontageCloudConfig);
    RegisterTask<TranscodeMediaFile>("TranscodeMediaFile");
    RegisterSyncMethod("CancelMontage", api_.get(), &ZvGalleryAPI::CancelMontage);
    RegisterTask<CreateMontage>("CreateMontage");
    RegisterTask<CreateMontageFromRecipe>("CreateMontageFromRecipe");
    RegisterTask<TrimVideo>("Trim");
    RegisterTask<AddMeme>("AddMeme");
    RegisterTask<EngraveMP4>("EngraveMP4");
    RegisterSyncMethod("UpdateMontageProgress", api_.get(), &ZvGalleryAPI::UpdateMontageProgress);
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
