#include "plugin-modules/Gallery/src/endpoints/MontageTasks.h"

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "CobalixUtil.h"
#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/product/Profile.h"
#include "common/text/SafeString.h"
#include "common/text/TextUtil.h"
#include "plugin-modules/Gallery/src/engraving/Engraver.h"
#include "plugin-modules/Gallery/src/montage/MontageFiles.h"

namespace {

constexpr int32_t kAlreadyInProgress = static_cast<int32_t>(0x800700D4);

// The prefix that makes a file a page for the browser inside the montage process.
constexpr const char* kMediaReference = "https://media-reference.localhost";

constexpr const char* kInProgressText = "Transcode already in progress, cannot start another.";
constexpr const char* kUnspecifiedText = "Unspecified failure.  ";

std::vector<std::string> FolderParts(const std::string& path) {
    return KXP::SplitString(path, std::string("/"));
}

std::string ConversionScript(const KXP::Value& params) {
    const auto recipe = KXP::jsonGetValue<std::string>(params, "recipe");
    KXP_LOG(KXP::LogMilestone, "RecipePath: %s", (RECIPE_PATH + recipe).c_str());
    return montage::FindRecipeScript(recipe);
}

std::string OverriddenScript(std::string script) {
    const std::string overriding = montage::OverridingScript();
    if (!overriding.empty()) {
        KXP_LOG(KXP::LogMilestone,
                "Overriding recipe conversion script using value from product-config.json");
        script = overriding;
    }
    KXP_LOG(KXP::LogMilestone, "Conversion Script: %s", script.c_str());
    return script;
}

// When the file cannot be written, the process reads the previous one.
void WriteStorage(const KXP::Value& params, const std::string& mediaFolder) {
    const std::string folder =
        KXP::CreateDirectoryPath(FolderParts(KXP::GetAppDataDirectory(KXP::LocalApp) + "/../" + MONTAGE_APP));
    (void)montage::WriteStorageFile(folder + "/" + STORAGE_FILE, params, mediaFolder);
}

// Returns the last of the places that exists; empty, with log lines, when none does.
std::string FindExecutable() {
    std::string found;
    const std::vector<std::string> places = montage::ExecutablePlaces(KXP::GetDirName(KXP::GetExePath()));
    for (const std::string& place : places)
        if (KXP::FileExists(place)) found = place;
    if (!found.empty()) return found;
    KXP_LOG(KXP::LogFailure, "Could not find path to Montage executable. Paths tried:");
    for (const std::string& place : places)
        KXP_LOG(KXP::LogFailure, "\t%s", place.c_str());
    return "";
}

void EngraveMontage(const std::string& output) {
    KXP_LOG(KXP::LogDetail, "Transcode complete, engraving output: %s", output.c_str());
    const auto info = std::make_unique<CaptureRequestInfo>();
    wcsncpy_s(info->mediaType, std::size(info->mediaType), L"Montage", std::wcslen(L"Montage"));
    (void)Engraver().apply(output, *info);
}

}  // namespace

KXP::RetVal CreateMontage::ExecuteAsync(const KXP::Value& params) {
    const auto script = KXP::jsonGetValue<std::string>(params, "script");
    const int32_t value = api().GetTranscoder()->CreateMontage(script);
    if (value == KXP::Code::kOk) return {};
    std::string text = "Failed to execution montage for \"" + script + "\".  ";
    if (value == kAlreadyInProgress)
        text += kInProgressText;
    else if (value == KXP::Code::kNoInterface)
        text += "Unable to initialize montage interface.  ";
    else
        text += kUnspecifiedText;
    return {KXP::Code::kFailure, text, value};
}

CreateMontageFromRecipe::CreateMontageFromRecipe(KXP::PluginModuleBase& module,
                                                 std::unique_ptr<KXP::JSONMessage> request,
                                                 std::shared_ptr<ZvGalleryAPI> api)
    : GalleryTaskBase(module, std::move(request), std::move(api)),
      transcoder_(this->api().GetTranscoder()),
      run_(*transcoder_) {}

KXP::RetVal CreateMontageFromRecipe::ExecuteAsync(const KXP::Value& params) {
    return CefMontage(params);
}

KXP::RetVal CreateMontageFromRecipe::CefMontage(const KXP::Value& params) {
    if (!api().Recipes().RecipeCloudSync())
        return {KXP::Code::kFailure, "Cloud sync fetch montage recipe failed", KXP::Code::kFailure};
    KXP::CreateDirectoryPath(
        FolderParts(KXP::GetProductDataDirectory(KXP::ProfileProduct) + "/" + RECIPE_PATH));
    std::string script = ConversionScript(params);
    const std::string mediaFolder = montage::FindMediaFolder();
    KXP_LOG(KXP::LogMilestone, "MediaPath: %s", mediaFolder.c_str());
    script = OverriddenScript(std::move(script));
    const auto output = KXP::jsonGetValue<std::string>(params, "output");
    WriteStorage(params, mediaFolder);
    const std::string executable = FindExecutable();
    if (executable.empty()) return {KXP::Code::kNotFound, "Could not find path to Montage executable", 0};

    const montage::OutputPlace place(output);
    const std::string argument = kMediaReference + script;
    KXP_LOG(KXP::LogMilestone, "Running montage process: %s %s", executable.c_str(), argument.c_str());
    const int32_t value = transcoder_->CreateCefMontageProcess(run_, executable, {argument});
    if (value != KXP::Code::kOk)
        return {KXP::Code::kFailure,
                std::string("Failed to create montage") +
                    (value == kAlreadyInProgress ? kInProgressText : kUnspecifiedText),
                value};
    if (transcoder_->WasMontageCanceled(run_)) {
        KXP_LOG(KXP::LogDetail, "Transcode canceled, deleting output: %s", output.c_str());
        place.DeleteIfMade();
    } else {
        EngraveMontage(output);
    }
    return {KXP::Code::kOk, "Montage Transcoding", 0};
}
