// The cloud that comes with the product: a folder laid out like a remote one. What it says is read without
// libcurl, so that a start whose manifest names no file loads nothing for it.
#pragma once

#include <string>

namespace KXP::Cloud {

// The address that the environment states instead; null when it states none.
const char* OtherCloud();

// At a fixed place relative to the library that this is linked into.
std::string ProductCloudFolder();

// The text of a manifest that ParseManifest takes, from a remote folder in this cloud. Throws Error, whose
// text is for the log.
std::string ReadProductManifest(const std::string& cloudFolder, const std::string& remoteFolder);

}  // namespace KXP::Cloud
