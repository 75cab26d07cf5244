#include "plugin-modules/Gallery/src/montage/MontageFiles.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "base/FileCalls.h"
#include "base/NewFile.h"
#include "base/ReadWrite.h"
#include "common/files/FileUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/product/Config.h"
#include "common/text/TextUtil.h"

const char* const RECIPE_PATH = "Montage/v1/";
const char* const MONTAGE_APP = "OvirastreamXMontage";
const char* const MONTAGE_EXE = "OvirastreamXMontage.exe";
const char* const MONTAGE_EXE_STAGE = "../OvirastreamXMontage/OvirastreamXMontage.exe";
const char* const STORAGE_FILE = "sharedstorage.json";

namespace montage {
namespace {

// The message layer adds the first three to payloads; a page might send the last.
constexpr const char* kForeignKeys[] = {"_return_code", "_return_status", "_return_internal",
                                        "mediaDirZorvex"};

}  // namespace

std::string FindRecipeScript(const std::string& recipe) {
    const std::vector<std::string> parts = KXP::SplitString(recipe, std::string("/"));
    if (std::find(parts.begin(), parts.end(), "..") != parts.end()) {
        KXP_LOG(KXP::LogFailure, "The recipe leads out of its folder: %s", recipe.c_str());
        return "";
    }
    return KXP::Config::Instance().FindAppData(RECIPE_PATH + recipe);
}

std::string FindMediaFolder() {
    const std::string media = KXP::Config::Instance().FindAppData(std::string(RECIPE_PATH) + "media");
    const size_t slash = media.rfind('/');
    return slash == std::string::npos ? "" : media.substr(0, slash);
}

std::string OverridingScript() {
    const KXP::Value& config = KXP::Config::Instance().GetProductConfig();
    if (!config.IsObject() || !config.HasMember("montage")) return "";
    return KXP::jsonGetValueOrDefault<std::string>(KXP::JSONGetObjectOrEmpty(config, "montage"),
                                                   "overrideRecipeScript", "");
}

bool WriteStorageFile(const std::string& path, const KXP::Value& params, const std::string& mediaFolder) {
    KXP::Document document(rapidjson::kObjectType);
    KXP::Allocator& allocator = document.GetAllocator();
    KXP::Value copy(params, allocator);
    for (const char* key : kForeignKeys) {
        while (copy.RemoveMember(key)) {
        }
    }
    copy.AddMember("mediaDirZorvex", KXP::Value(mediaFolder, allocator), allocator);
    document.AddMember("recipeParams", copy, allocator);
    KXP::JsonBuffer text;
    KXP::JsonWriter writer(text);
    document.Accept(writer);

    KXP::NewFile file(path);
    return file.IsOpen() && KXP::WriteFullyAt(file.descriptor(), text.GetString(), text.GetSize(), 0) &&
           file.PutOver();
}

std::vector<std::string> ExecutablePlaces(const std::string& folder) {
    const std::string name = std::string("/") + MONTAGE_APP + ".app/Contents/MacOS/" + MONTAGE_APP;
    return {folder + name, folder + "/../../.." + name};
}

OutputPlace::OutputPlace(std::string path) : path_(std::move(path)), before_(Look(path_)) {}

bool OutputPlace::Identity::operator==(const Identity& other) const {
    return std::tie(exists, device, file, size, time) ==
           std::tie(other.exists, other.device, other.file, other.size, other.time);
}

OutputPlace::Identity OutputPlace::Look(const std::string& path) {
    struct stat status {};
    // Links are not followed: their target is not a montage.
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return {true, static_cast<uint64_t>(status.st_dev), status.st_ino, status.st_size,
            KXP::Platform::ModifiedNs(status)};
}

void OutputPlace::DeleteIfMade() const {
    const Identity now = Look(path_);
    if (now.exists && !(now == before_)) (void)KXP::FileDelete(path_, true);
}

}  // namespace montage
