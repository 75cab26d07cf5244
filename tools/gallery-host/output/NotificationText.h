// Formats a notification of the gallery for people. Pure: name and payload in, one line out.
#pragma once

#include <optional>
#include <string>

#include "common/json/Json.h"

namespace host {

// The member "capacity" of a notification or of the settings, for example "on, 50 % of 512 GB (1.2 GB used)";
// nothing if it has another form.
std::optional<std::string> CapText(const KXP::Value& holder);

// For example "saved      Rustwind Rally/Photo finish.png  image, highlight, 2.4 MB"; without time and line
// end. A notification of an unknown name or form becomes its name and its payload as JSON.
std::string NotificationText(const std::string& method, const KXP::Value& payload);

}  // namespace host
