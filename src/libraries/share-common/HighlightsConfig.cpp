#include "libraries/share-common/HighlightsConfig.h"

#include <utility>
#include <vector>

#include "CobalixUtil.h"
#include "base/Text.h"
#include "common/FileUtil.h"
#include "libraries/share-common/HighlightsConfigJson.h"
#include "libraries/share-common/ShareFolder.h"

namespace {

using KXP::RetVal;

constexpr size_t kMaxFolderName = 255;
constexpr size_t kLanguageLength = 2;  // of a locale, as "pt" in "pt-BR"

// Where the product kept the file before; on this platform, nowhere.
constexpr const char* kLegacyFile = "";

bool IsFolderName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.size() <= kMaxFolderName &&
           name.find_first_of(std::string("/\\\0", 3)) == std::string::npos;
}

KXP::JSONFile FileOf(const std::string& applicationName) {
    // A file without a path, which nothing opens.
    if (!IsFolderName(applicationName)) return {};
    std::vector<std::string> folder = GetShareFolderPath();
    folder.emplace_back("Highlights");
    return {folder, applicationName, "config.json"};
}

RetVal NotFound(const char* text) {
    KXP_LOG(KXP::LogFailure, "%s", text);
    return {KXP::Code::kNotFound, text, 0};
}

// `locale` in lower case, as the table's keys are; null when neither it nor its language is there.
const std::string* FindName(const std::map<std::string, std::string>& names, const std::string& locale) {
    auto found = names.find(locale);
    if (found == names.end()) found = names.find(locale.substr(0, kLanguageLength));
    return found == names.end() ? nullptr : &found->second;
}

}  // namespace

HighlightsConfig::HighlightsConfig(const std::string& applicationName) : file_(FileOf(applicationName)) {
    if (!file_.path().empty()) KXP::FileMigrate(kLegacyFile, file_.path());
}

RetVal HighlightsConfig::ReadConfig(HighlightConfigData& config) const {
    KXP::Document document;
    if (file_.ReadAndParseJSON(document).Failed())
        return NotFound("Failed to read and parse Highlights config JSON file");
    if (!ReadHighlightsConfig(document, config))
        return NotFound("Highlights config JSON file has invalid data");
    return {};
}

bool HighlightsConfig::IsHighlightDefined(const HighlightConfigData& config, const std::string& id) {
    return config.highlights.count(id) != 0;
}

std::string HighlightsConfig::GetLocalizedHighlightName(const HighlightDefinition& definition,
                                                        const std::string& locale,
                                                        const std::string& defaultLocale) {
    const std::string* name = FindName(definition.names, KXP::ToLower(locale));
    if (!name) name = FindName(definition.names, KXP::ToLower(defaultLocale));
    return name ? *name : definition.id;
}
