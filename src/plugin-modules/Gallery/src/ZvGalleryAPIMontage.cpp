// Montages: their recipes, kept in step with the cloud, and what the pages ask of them.
#include "CobalixUtil.h"
#include "common/Config.h"
#include "common/JsonHelpers.h"
#include "common/JsonParse.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"
#include "plugin-modules/Gallery/src/montage/MontageFiles.h"

using KXP::RetVal;
namespace Code = KXP::Code;

namespace {

constexpr const char* kRemoteFolder = "share/montage/v1";
constexpr const char* kLocalFolder = "Montage/v1";

// What of the manifest is fetched, in this order.
struct RecipePart {
    const char* key;
    const char* failure;
};
constexpr RecipePart kRecipeParts[] = {
    {"MontageConfig.json", "Cloud sync MontageConfig.json failed"},
    {"media", "Cloud sync montage media failed"},
    {"release", "Cloud sync montage recipes failed"},
};

// The manifest of the recipes; false when it cannot be had.
bool FetchManifest(KXP::Document& manifest) {
    std::string text;
    void* context = nullptr;
    manifest.SetObject();
    const bool fetched = KXP::CloudSyncFetchManifestBegin(kRemoteFolder, text, context) && !text.empty();
    if (fetched && (KXP::ParseJSON(text, manifest).IsError() || !manifest.IsObject())) manifest.SetObject();
    KXP::CloudSyncFetchManifestEnd(kRemoteFolder, kLocalFolder, KXP::WriteJSONToString(manifest), context);
    return fetched;
}

bool FetchPart(const KXP::Document& manifest, const RecipePart& part) {
    const auto member = manifest.FindMember(part.key);
    if (member == manifest.MemberEnd()) return true;
    KXP::Document wanted(rapidjson::kObjectType);
    wanted.AddMember(rapidjson::StringRef(part.key), KXP::Value(member->value, wanted.GetAllocator()),
                     wanted.GetAllocator());
    if (KXP::CloudSyncObject(kRemoteFolder, kLocalFolder, KXP::WriteJSONToString(wanted))) return true;
    KXP_LOG(KXP::LogMilestone, "%s", part.failure);
    return false;
}

}  // namespace

bool ZvGalleryAPI::RecipeCloudSync() {
    KXP_LOG(KXP::LogMilestone, "CloudSync montage recipe files start");
    KXP::Document manifest;
    // An abort ends what is on its way; what would come behind it is not begun.
    if (cleanedUp_ || !FetchManifest(manifest)) {
        KXP_LOG(KXP::LogMilestone, "Cloud sync fetch manifest failed");
        return false;
    }
    for (const RecipePart& part : kRecipeParts)
        if (cleanedUp_ || !FetchPart(manifest, part)) return false;
    KXP_LOG(KXP::LogMilestone, "CloudSync montage recipe files done");
    return true;
}

RetVal ZvGalleryAPI::CancelMontage(std::unique_ptr<KXP::JSONMessage>, KXP::Value&, KXP::Allocator&) {
    transcoder_->CancelMontage();
    return {};
}

// A failure is told by the code alone.
RetVal ZvGalleryAPI::GetMontageCloudConfig(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                           KXP::Allocator& allocator) {
    KXP_LOG(KXP::LogMilestone, "%s", message->method());
    RetVal result;
    const std::string path =
        KXP::Config::Instance().FindAppData(std::string(RECIPE_PATH) + "MontageConfig.json");
    if (path.empty()) {
        KXP_LOG(KXP::LogFailure, "Failed to find MontageConfig.json");
        result.code = Code::kFailure;
        return result;
    }
    KXP::Document config;
    if (!KXP::ReadJSON(path, config)) {
        KXP_LOG(KXP::LogFailure, "Could not read MontageConfig.json");
        result.code = Code::kNotFound;
        return result;
    }
    response.AddMember("montageConfig", KXP::Value(config, allocator), allocator);
    return result;
}
