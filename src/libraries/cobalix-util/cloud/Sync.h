// One use of a cloud: the manifest of a remote folder, and the files that a manifest names. Belongs to one
// thread; any number of them may work on the same folders. Everything throws Error, whose text is for the
// log.
#pragma once

#include <string>

#include "libraries/cobalix-util/cloud/Transfer.h"
#include "libraries/cobalix-util/cloud/Url.h"

namespace KXP::Cloud {

class Sync {
  public:
    Sync(Url base, const Limits& limits, const StopAsked& stopAsked)
        : base_(std::move(base)), stopAsked_(stopAsked), transfer_(limits, stopAsked) {}

    // The text of a manifest that ParseManifest takes.
    std::string FetchManifest(const std::string& remoteFolder);

    // Brings the files that are not in the local folder yet, a relative path beneath `dataFolder`. What is
    // there stays when a later file fails. Nothing is fetched or made for a manifest with a fault anywhere.
    void FetchFiles(const std::string& remoteFolder, const std::string& dataFolder,
                    const std::string& localFolder, const std::string& manifest);

  private:
    Url base_;
    StopAsked stopAsked_;
    Transfer transfer_;
};

}  // namespace KXP::Cloud
