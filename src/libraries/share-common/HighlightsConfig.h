// What highlights an application can produce, and which of them its user wants: one file for each
// application. The application's definitions and the user's choices are written by separate calls, and
// neither call loses the other's.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "common/json/JSONFile.h"
#include "common/results/RetVal.h"
#include "common/threads/HeldLog.h"
#include "common/threads/Mutex.h"
#include "libraries/share-common/Highlight.h"

struct HighlightDefinition {
    std::string id;
    std::map<std::string, std::string> names;  // by locale
    bool userInterest = false;                 // the application's default
    int32_t userEnabled = -1;                  // the user's choice: 1 yes, 0 no, -1 none yet
    uint32_t highlightTags = 0;                // bits
    uint32_t significance = 0;                 // bits
};

struct HighlightConfigData {
    std::string defaultLocale;
    std::string drsName;
    std::string profileName;
    std::string shortName;
    std::map<std::string, HighlightDefinition> highlights;  // by definition id
};

// A definition as a user sees it.
struct HighlightEntryInformation {
    std::string name;
    bool enabled = false;
    uint32_t significance = 0;
    uint32_t highlightTags = 0;
};

struct HighlightUserConfigData {
    std::map<std::string, HighlightEntryInformation> highlights;  // by definition id
};

// Guards all reading and writing of every such file.
extern KXP::Mutex g_configFileMutex;

// Any thread may call any function, on one object or on several for the same application. Log lines are sent
// after the unlock, so a log callback may call in again.
class HighlightsConfig {
  public:
    // Makes the application's folder; throws KXP::Exception 0x80004005 when it cannot. Names come from the
    // metadata of captures: one that is no plain folder name touches nothing on disk, and every call then
    // fails as for a file that cannot be opened.
    explicit HighlightsConfig(const std::string& applicationName);

    // 0x80070002 on any failure, which leaves `config` unchanged. A damaged definition is left out.
    KXP::RetVal ReadConfig(HighlightConfigData& config) const EXCLUDES(g_configFileMutex);
    // For the application: `config` receives the user's choices for the definitions that it keeps.
    KXP::RetVal WriteConfig(HighlightConfigData& config) const EXCLUDES(g_configFileMutex);

    // Fails with the codes of KXP::JSONFile or 0x80004005, and then leaves `config` unchanged.
    KXP::RetVal ReadUserConfig(HighlightUserConfigData& config, const std::string& locale) const
        EXCLUDES(g_configFileMutex);
    // For the user: stores the flag of each entry whose definition is known. 0x80004005 while the application
    // has written no definitions.
    KXP::RetVal WriteUserConfig(const HighlightUserConfigData& config) const EXCLUDES(g_configFileMutex);

    KXP::RetVal DeleteConfig() const EXCLUDES(g_configFileMutex);

    // The user's choice, or else the application's default; false for an unknown id.
    static bool IsUserInterested(const HighlightConfigData& config, const std::string& id);
    static bool IsHighlightDefined(const HighlightConfigData& config, const std::string& id);
    // Sets the definition's id, significance and tags. 1 for an unknown id, else 0.
    static int GetHighlightTemplate(const HighlightConfigData& config, Highlight& highlight,
                                    const std::string& id);
    // The name for a locale, or for its language alone, or the same of the default locale; otherwise the id.
    static std::string GetLocalizedHighlightName(const HighlightDefinition& definition,
                                                 const std::string& locale, const std::string& defaultLocale);

  private:
    KXP::RetVal readConfig(HighlightConfigData& config, KXP::HeldLog& log) const REQUIRES(g_configFileMutex);
    KXP::RetVal writeConfig(const HighlightConfigData& config, KXP::HeldLog& log) const
        REQUIRES(g_configFileMutex);

    KXP::JSONFile file_;
};
