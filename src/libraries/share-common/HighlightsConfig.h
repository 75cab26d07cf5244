// What highlights an application can produce: one file for each application, which the application writes and
// this product reads.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "common/JSONFile.h"
#include "common/RetVal.h"

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

// Any thread may call any function.
class HighlightsConfig {
  public:
    // Makes the application's folder; throws KXP::Exception 0x80004005 when it cannot. Names come from the
    // metadata of captures: one that is no plain folder name touches nothing on disk, and reading then fails.
    explicit HighlightsConfig(const std::string& applicationName);

    // 0x80070002 on any failure, which leaves `config` unchanged. A damaged definition is left out.
    KXP::RetVal ReadConfig(HighlightConfigData& config) const;

    static bool IsHighlightDefined(const HighlightConfigData& config, const std::string& id);
    // The name for a locale, or for its language alone, or the same of the default locale; otherwise the id.
    static std::string GetLocalizedHighlightName(const HighlightDefinition& definition,
                                                 const std::string& locale, const std::string& defaultLocale);

  private:
    KXP::JSONFile file_;
};
