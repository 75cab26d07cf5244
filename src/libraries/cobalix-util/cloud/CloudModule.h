// What libCobalixCloud exports for libCobalixUtil, which opens it when the cloud is used: few users ever do,
// and libcurl brings thirty libraries. Nothing is thrown, because an exception would outlive the open module.
#pragma once

#include <cstdio>
#include <string>

#include "libraries/cobalix-util/cloud/Error.h"

namespace KXP::Cloud {

// Why a call failed, for the log; kept without memory of its own, which may be what is missing.
struct Failure {
    void Set(const char* reason) { std::snprintf(text, sizeof text, "%s", reason); }
    char text[512] = "";
};

}  // namespace KXP::Cloud

#pragma GCC visibility push(default)

extern "C" {

// Both return whether all went well. The text of a manifest is whole and valid, or empty.
bool CobalixCloudFetchManifest(const char* remoteFolder, const KXP::Cloud::StopAsked& stopAsked,
                               std::string& manifest, KXP::Cloud::Failure& failure) noexcept;

// Brings the files that the manifest names into a folder beneath that of the product's data.
bool CobalixCloudFetchFiles(const char* remoteFolder, const char* localFolder, const std::string& manifest,
                            const KXP::Cloud::StopAsked& stopAsked, KXP::Cloud::Failure& failure) noexcept;
}

#pragma GCC visibility pop
