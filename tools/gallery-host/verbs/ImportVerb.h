// The verb import: files of other recorders become captures of the product.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

struct ImportVerbOptions {
    std::vector<std::string> paths;  // absolute, of files and folders
    std::string game;
    std::string highlight;
    std::optional<int64_t> time;  // in ns since 1970
    bool move = false;
    bool dryRun = false;
    bool json = false;
    bool follow = false;  // the one folder in `paths`, until an interrupt
};

// Throws Failure, also after the last file when some could not be imported.
void RunImport(Session& session, Output& output, Interrupt& interrupt, const ImportVerbOptions& options);

}  // namespace host
