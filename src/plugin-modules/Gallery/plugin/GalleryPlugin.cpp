#include "plugin-modules/Gallery/plugin/GalleryPlugin.h"

#include "CobalixUtil.h"
#include "common/product/Profile.h"
#include "common/results/Exception.h"
#include "common/text/TextUtil.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"

namespace KXP {

IContainerConnector* IContainerConnector::CreatePluginInstance() {
    return PluginModuleBase::HandOver(std::make_shared<GalleryPlugin>());
}

void IContainerConnector::DestroyPluginInstance(IContainerConnector* instance) {
    PluginModuleBase::TakeBack(instance);
}

}  // namespace KXP

namespace {

// Messages and the product's files are UTF-8: in them, the path of a home that is not would name another
// folder.
void CheckUserFolders() {
    for (const auto folder : {KXP::SD_HOME, KXP::SD_APP_SUPPORT, KXP::SD_MOVIES}) {
        const std::string path = KXP::GetSpecialDirectory(folder);
        if (KXP::IsValidUtf8(path)) continue;
        const std::string text = "The name of a folder of the user's is not UTF-8: " + KXP::ToValidUtf8(path);
        throw KXP::Exception(KXP::Code::kInvalidArgument, text.c_str(), 0);
    }
}

}  // namespace

GalleryPlugin::GalleryPlugin() : PluginModuleBase("CobalixNative", "Gallery", ApiCatalogueText()) {}

GalleryPlugin::~GalleryPlugin() = default;

bool GalleryPlugin::Initialize() {
    KXP_LOG(KXP::LogMilestone, "Initialized %s", "Gallery");
    CheckUserFolders();
    try {
        api_ = std::make_shared<ZvGalleryAPI>(*this, task_queue());
    } catch (...) {
        KXP_LOG(KXP::LogFailure, "Exception during GalleryAPI construction, API is not valid: %s",
                KXP::ToStr(KXP::ExceptionToRetVal()).c_str());
        return false;
    }
    {
        const KXP::MutexLock lock(abandonMutex_);
        toAbandon_ = api_;
    }
    requests_.emplace(*api_);
    RegisterEndpoints();
    requests_->settings.FollowRegularly();
    return true;
}

bool GalleryPlugin::Start() {
    if (!api_) return false;
    SubscribeToCaptures();
    api_->Start();
    KXP_LOG(KXP::LogMilestone, "CloudSync montage recipe async task started");
    task_queue().ExecuteAsync(
        [api = api_] {
            (void)api->Recipes().RecipeCloudSync();
            return KXP::TaskStatusDone;
        },
        task_queue().Now(), "");
    return true;
}

bool GalleryPlugin::Stop() {
    KXP::CloudSyncAbort();
    if (api_) api_->Cleanup();
    return true;
}

void GalleryPlugin::Uninitialize() {
    // Even if an abandoned task keeps the object: the next start has its own tracker over the same files.
    if (api_) api_->EndTracker();
    requests_.reset();
    api_.reset();
}

void GalleryPlugin::Abandon() {
    std::shared_ptr<ZvGalleryAPI> api;
    {
        const KXP::MutexLock lock(abandonMutex_);
        api = toAbandon_.lock();
    }
    if (api) ZvGalleryAPI::Abandon(api);
}

void GalleryPlugin::ReportError(const KXP::RetVal& value, const std::string& message) {
    const std::string text = std::string("Text: ") + KXP::CodeText(value.code) + " Message: " + message;
    KXP_LOG(KXP::LogFailure, "Gallery API failed %s with %s", text.c_str(), KXP::ToStr(value).c_str());
}
