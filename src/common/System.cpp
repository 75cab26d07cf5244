#include "common/System.h"

#include <cstdlib>

#include "common/RetVal.h"

namespace KXP {

int GetUserLanguage(std::string& language) {
    language = GetOsLocale();
    return Code::kOk;
}

std::optional<std::string> GetEnv(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    if (!value) return {};
    return value;
}

}  // namespace KXP
