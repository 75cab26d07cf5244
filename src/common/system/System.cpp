#include "common/system/System.h"

#include <cerrno>
#include <cstdlib>

#include "CobalixUtil.h"

namespace KXP {

int GetUserLanguage(std::string& language) {
    language = GetOsLocale();
    return Code::kOk;
}

int GetLocale(std::string&) {
    return Code::kFailure;
}

std::optional<std::string> GetEnv(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    if (!value) return {};
    return value;
}

void SetEnv(const std::string& name, const std::optional<std::string>& value) {
    const int result = value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    if (result == 0) return;
    const int error = errno;
    if (error == ENOMEM) throw Error::OutOfMemory;
    KXP_LOG(LogFailure, "ERROR: Unknown failure for setenv / unsetenv: %d", error);
    throw Error::Unexpected;
}

}  // namespace KXP
