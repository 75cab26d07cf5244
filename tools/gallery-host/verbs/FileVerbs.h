// The verbs that change files: cp, mv and rm.
#pragma once

#include <string>
#include <vector>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

struct FileOptions {
    bool dryRun = false;
    bool json = false;
};

// One file, and what is to become of it.
struct FileJob {
    std::string name;  // as the user wrote it
    std::string path;  // absolute
    std::string destination;
    std::string error;  // why the plug-in is not even asked
};

// `paths` ends in the destination, and files go into it under their own names when it is a folder or ends in
// "/". Throws Failure(kExitFailed) for several files and a destination that is neither. A move makes the
// folder, a copy does not.
std::vector<FileJob> PlanMoves(const std::vector<std::string>& paths);
std::vector<FileJob> PlanCopies(const std::vector<std::string>& paths);
// rm: each file once.
std::vector<FileJob> PlanRemovals(const std::vector<std::string>& paths);

// These go on after a file that fails, say why in one line, and throw Failure(kExitFailed) at the end. With
// JSON each file is a line of standard output.
void RunCopy(Session& session, Output& output, const std::vector<FileJob>& jobs, const FileOptions& options);
void RunMove(Session& session, Output& output, const std::vector<FileJob>& jobs, const FileOptions& options);
void RunRemove(Session& session, Output& output, const std::vector<FileJob>& jobs,
               const FileOptions& options);

}  // namespace host
