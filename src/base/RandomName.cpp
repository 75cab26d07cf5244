#include "base/RandomName.h"

#include <cstdio>
#include <random>

namespace KXP {

std::string RandomName() {
    std::random_device random;
    char name[17];
    std::snprintf(name, sizeof name, "%08x%08x", random(), random());
    return name;
}

}  // namespace KXP
