#include "libraries/share-common/HighlightsConfig.h"

#include <utility>
#include <vector>

#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "common/text/TextUtil.h"
#include "libraries/share-common/HighlightsConfigJson.h"
#include "libraries/share-common/ShareFolder.h"

namespace {

using KXP::HeldLog;
using KXP::LogFailure;
using KXP::MutexLock;
using KXP::RetVal;
namespace Code = KXP::Code;

constexpr size_t kMaxFolderName = 255;
constexpr size_t kLanguageLength = 2;  // of a locale, as "pt" in "pt-BR"

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

RetVal Failed(HeldLog& log, const char* line, int32_t code, const char* text) {
    log.Add(LogFailure, line);
    return {code, text, 0};
}

bool IsInterested(const HighlightDefinition& definition) {
    if (definition.userEnabled == -1) return definition.userInterest;
    return definition.userEnabled == 1;
}

void KeepUserChoices(const HighlightConfigData& old, HighlightConfigData& config) {
    for (auto& [id, definition] : config.highlights) {
        const auto found = old.highlights.find(id);
        if (found != old.highlights.end()) definition.userEnabled = found->second.userEnabled;
    }
}

void TakeUserChoices(const HighlightUserConfigData& choices, HighlightConfigData& config) {
    for (const auto& [id, entry] : choices.highlights) {
        const auto found = config.highlights.find(id);
        if (found == config.highlights.end()) continue;
        HighlightDefinition& definition = found->second;
        // A user who only confirms the default stays undecided and follows a later default.
        if (definition.userEnabled == -1 && entry.enabled == definition.userInterest) continue;
        definition.userEnabled = entry.enabled ? 1 : 0;
    }
}

// Where the product kept the file before; on this platform, nowhere.
constexpr const char* kLegacyFile = "";

// `locale` in lower case, as the table's keys are; null when neither it nor its language is there.
const std::string* FindName(const std::map<std::string, std::string>& names, const std::string& locale) {
    auto found = names.find(locale);
    if (found == names.end()) found = names.find(locale.substr(0, kLanguageLength));
    return found == names.end() ? nullptr : &found->second;
}

}  // namespace

KXP::Mutex g_configFileMutex;

HighlightsConfig::HighlightsConfig(const std::string& applicationName) : file_(FileOf(applicationName)) {
    if (!file_.path().empty()) KXP::FileMigrate(kLegacyFile, file_.path());
}

RetVal HighlightsConfig::readConfig(HighlightConfigData& config, HeldLog& log) const {
    KXP::Document document;
    // One that cannot be read at the moment is not missing: a new one in its place would lose the user's
    // choices.
    const RetVal read = file_.ReadUnlessPassing(document, log);
    if (read.Failed()) {
        constexpr const char* kText = "Failed to read and parse Highlights config JSON file";
        return Failed(log, kText, read.code, kText);
    }
    if (!ReadHighlightsConfig(document, config, log)) {
        constexpr const char* kText = "Highlights config JSON file has invalid data";
        return Failed(log, kText, Code::kFailure, kText);
    }
    return {};
}

RetVal HighlightsConfig::writeConfig(const HighlightConfigData& config, HeldLog& log) const {
    KXP::Document document;
    WriteHighlightsConfig(config, document);
    return file_.WriteJSON(document, log);
}

RetVal HighlightsConfig::ReadConfig(HighlightConfigData& config) const {
    HeldLog log;
    MutexLock lock(g_configFileMutex);
    RetVal result = readConfig(config, log);
    // Callers do not distinguish failures: an unusable file is to them as good as none.
    if (result.Failed()) result.code = Code::kNotFound;
    return result;
}

RetVal HighlightsConfig::WriteConfig(HighlightConfigData& config) const {
    HeldLog log;
    MutexLock lock(g_configFileMutex);
    HighlightConfigData old;
    const RetVal read = readConfig(old, log);
    if (read.code == Code::kNotFound) {
        log.Add(LogFailure, "WriteConfig: Couldn't open existing config file, creating new file");
    } else if (read.Failed()) {
        // The file stays unchanged, because the user's choices may still be in it.
        constexpr const char* kText = "WriteConfig: Couldn't open or create config file";
        return Failed(log, kText, Code::kFailure, kText);
    }
    KeepUserChoices(old, config);
    if (writeConfig(config, log).Failed())
        return Failed(log, "Could not write configuration to disk", Code::kFailure,
                      "WriteConfig: Could not write configuration to disk");
    return {};
}

RetVal HighlightsConfig::ReadUserConfig(HighlightUserConfigData& config, const std::string& locale) const {
    HeldLog log;
    MutexLock lock(g_configFileMutex);
    HighlightConfigData data;
    RetVal result = readConfig(data, log);
    if (result.Failed()) return result;
    config.highlights.clear();
    for (const auto& [id, definition] : data.highlights) {
        config.highlights[id] = {GetLocalizedHighlightName(definition, locale, data.defaultLocale),
                                 IsInterested(definition), definition.significance, definition.highlightTags};
    }
    return result;
}

RetVal HighlightsConfig::WriteUserConfig(const HighlightUserConfigData& config) const {
    HeldLog log;
    MutexLock lock(g_configFileMutex);
    HighlightConfigData data;
    if (readConfig(data, log).Failed())
        return Failed(log, "WriteUserConfig: Can't write user config without full highlights config file",
                      Code::kFailure, "Highlights have't been configured");
    TakeUserChoices(config, data);
    if (writeConfig(data, log).Failed())
        return Failed(log, "Could not write configuration to disk", Code::kFailure,
                      "WriteUserConfig: Could not write configuration to disk");
    return {};
}

RetVal HighlightsConfig::DeleteConfig() const {
    HeldLog log;
    MutexLock lock(g_configFileMutex);
    if (file_.RemoveFile(log).Failed())
        return Failed(log, "Failed to delete config file", Code::kFailure,
                      "Failed to access highlights config file");
    return {};
}

bool HighlightsConfig::IsUserInterested(const HighlightConfigData& config, const std::string& id) {
    const auto found = config.highlights.find(id);
    return found != config.highlights.end() && IsInterested(found->second);
}

bool HighlightsConfig::IsHighlightDefined(const HighlightConfigData& config, const std::string& id) {
    return config.highlights.count(id) != 0;
}

int HighlightsConfig::GetHighlightTemplate(const HighlightConfigData& config, Highlight& highlight,
                                           const std::string& id) {
    const auto found = config.highlights.find(id);
    if (found == config.highlights.end()) return Code::kNothingDone;
    highlight.SetHighlightDefinitionId(found->second.id);
    highlight.SetSignificance(static_cast<int>(found->second.significance));
    highlight.SetTags(static_cast<int>(found->second.highlightTags));
    return Code::kOk;
}

std::string HighlightsConfig::GetLocalizedHighlightName(const HighlightDefinition& definition,
                                                        const std::string& locale,
                                                        const std::string& defaultLocale) {
    const std::string* name = FindName(definition.names, KXP::ToLower(locale));
    if (!name) name = FindName(definition.names, KXP::ToLower(defaultLocale));
    return name ? *name : definition.id;
}
