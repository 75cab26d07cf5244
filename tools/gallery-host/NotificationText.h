// A notification of the gallery as people read it. Pure: name and payload in, one line out.
#pragma once

#include <string>

#include "common/Json.h"

namespace host {

// For example "saved      Rustwind Rally/Photo finish.png  image, highlight, 2.4 MB"; no time, no line end. A
// notification that is not known, or not of the form known, becomes its name and its payload as JSON.
std::string NotificationText(const std::string& method, const KXP::Value& payload);

}  // namespace host
