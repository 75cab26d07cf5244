#include "gallery-host/base/UserEnvironment.h"

#include <vector>

#include "common/system/System.h"
#include "gallery-host/base/Desktop.h"

namespace host {
namespace {

struct Copy {
    std::vector<std::string> variables;
    std::vector<char*> pointers;  // to these, then a null
};

// Empty until the home is moved.
Copy& Kept() {
    static Copy copy;
    return copy;
}

}  // namespace

void MoveHome(const std::string& home) {
    Copy& copy = Kept();
    for (char** variable = KXP::Platform::Environment(); *variable; ++variable)
        copy.variables.emplace_back(*variable);
    for (std::string& variable : copy.variables)
        copy.pointers.push_back(variable.data());
    copy.pointers.push_back(nullptr);
    Platform::SetHome(home);
}

char* const* UserEnvironment() {
    return Kept().pointers.empty() ? KXP::Platform::Environment() : Kept().pointers.data();
}

}  // namespace host
