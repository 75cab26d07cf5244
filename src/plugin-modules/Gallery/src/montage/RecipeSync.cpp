#include "plugin-modules/Gallery/src/montage/RecipeSync.h"

#include <cstring>
#include <string>

#include "CobalixUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "plugin-modules/Gallery/src/montage/MontageFiles.h"

namespace montage {
namespace {

constexpr const char* kRemoteFolder = "share/montage/v1";

// RECIPE_PATH without the "/" at its end.
std::string LocalFolder() {
    return {RECIPE_PATH, std::strlen(RECIPE_PATH) - 1};
}

// The parts of the manifest that are fetched, in this order.
struct RecipePart {
    const char* key;
    const char* failure;
};
constexpr RecipePart kRecipeParts[] = {
    {"MontageConfig.json", "Cloud sync MontageConfig.json failed"},
    {"media", "Cloud sync montage media failed"},
    {"release", "Cloud sync montage recipes failed"},
};

// Reads the manifest of the recipes. False when it cannot be fetched.
bool FetchManifest(KXP::Document& manifest) {
    std::string text;
    void* context = nullptr;
    manifest.SetObject();
    const bool fetched = KXP::CloudSyncFetchManifestBegin(kRemoteFolder, text, context) && !text.empty();
    if (fetched && (KXP::ParseJSON(text, manifest).IsError() || !manifest.IsObject())) manifest.SetObject();
    KXP::CloudSyncFetchManifestEnd(kRemoteFolder, LocalFolder().c_str(), KXP::WriteJSONToString(manifest),
                                   context);
    return fetched;
}

bool FetchPart(const KXP::Document& manifest, const RecipePart& part) {
    const auto member = manifest.FindMember(part.key);
    if (member == manifest.MemberEnd()) return true;
    KXP::Document wanted(rapidjson::kObjectType);
    wanted.AddMember(rapidjson::StringRef(part.key), KXP::Value(member->value, wanted.GetAllocator()),
                     wanted.GetAllocator());
    if (KXP::CloudSyncObject(kRemoteFolder, LocalFolder().c_str(), KXP::WriteJSONToString(wanted)))
        return true;
    KXP_LOG(KXP::LogMilestone, "%s", part.failure);
    return false;
}

}  // namespace

bool RecipeSync::RecipeCloudSync() {
    KXP_LOG(KXP::LogMilestone, "CloudSync montage recipe files start");
    KXP::Document manifest;
    // An abort ends only the transfer that is running, so no other may begin after it.
    if (ended_ || !FetchManifest(manifest)) {
        KXP_LOG(KXP::LogMilestone, "Cloud sync fetch manifest failed");
        return false;
    }
    for (const RecipePart& part : kRecipeParts)
        if (ended_ || !FetchPart(manifest, part)) return false;
    KXP_LOG(KXP::LogMilestone, "CloudSync montage recipe files done");
    return true;
}

void RecipeSync::End() {
    ended_ = true;
    // For a sync that read the flag before.
    KXP::CloudSyncAbort();
}

}  // namespace montage
