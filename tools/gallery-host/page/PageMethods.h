// What a page may ask for.
#pragma once

#include <string>
#include <vector>

namespace host::page {

// Requests of the library, without its notifications. The rest of the catalogue is for the capture service,
// the montage process and other parts of the client.
const std::vector<std::string>& PageMethods();
bool IsPageMethod(const std::string& method);

bool IsNotificationMethod(const std::string& method);

// Whether equal requests may share one answer.
bool OnlyReads(const std::string& method);

}  // namespace host::page
