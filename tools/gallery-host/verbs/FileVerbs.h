// The verbs that change files: cp, mv and rm.
#pragma once

#include <string>
#include <vector>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"
#include "gallery-host/verbs/FileReport.h"

namespace host {

struct FileOptions {
    bool dryRun = false;
    bool permanently = false;  // rm: not to the trash
    bool json = false;
};

// The last of `paths` is the destination. If it is a folder or ends in "/", files go into it under their own
// names; if not, several files throw Failure(kExitFailed). A move creates the folder, a copy does not.
std::vector<FileJob> PlanMoves(const std::vector<std::string>& paths);
std::vector<FileJob> PlanCopies(const std::vector<std::string>& paths);
// rm: each file once.
std::vector<FileJob> PlanRemovals(const std::vector<std::string>& paths);

// These report a failure in one line, go on with the next file, and throw Failure(kExitFailed) at the end.
// With JSON each file is a line of standard output.
void RunCopy(Session& session, Output& output, const std::vector<FileJob>& jobs, const FileOptions& options);
void RunMove(Session& session, Output& output, const std::vector<FileJob>& jobs, const FileOptions& options);
void RunRemove(Session& session, Output& output, const std::vector<FileJob>& jobs,
               const FileOptions& options);

}  // namespace host
