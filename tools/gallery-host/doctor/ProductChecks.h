// Looks at the product as it is installed.
#pragma once

#include <string>

#include "gallery-host/doctor/Finding.h"

namespace host {

// `plugin` is the path of the plug-in's library. Each library is loaded in a process of its own, which a
// broken one may end: call it before there are threads.
Findings CheckProduct(const std::string& plugin);

}  // namespace host
