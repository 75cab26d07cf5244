#include "gallery-host/verbs/FileVerbs.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <set>
#include <system_error>
#include <utility>

#include <sys/stat.h>

#include "gallery-host/base/Paths.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/Words.h"
#include "gallery-host/session/Batch.h"
#include "gallery-host/trash/LastTrashed.h"
#include "gallery-host/trash/Trash.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Verbs.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLookUp = "GetFileMetadata";

struct Verb {
    const char* method;
    const char* doing;
    const char* done;
    bool names = false;  // prints each file that it was done to
};

constexpr Verb kCopy{"CopyFile", "copying", "copied"};
constexpr Verb kMove{"MoveFile", "moving", "moved"};
constexpr Verb kRemove{"RemoveGalleryItem", "removing", "removed"};
constexpr Verb kTrash{kLookUp, "moving to the trash", "moved to the trash", true};
constexpr Verb kDryRun{kLookUp, "looking up", "would be removed", true};

// Moves on one volume do not compete for the disk.
constexpr size_t kMovesAtOnce = 16;

bool StaysOnItsVolume(const FileJob& job) {
    struct stat source {};
    struct stat target {};
    fs::path folder = fs::path(job.destination).parent_path();
    while (stat(folder.c_str(), &target) != 0 && folder.has_relative_path())
        folder = folder.parent_path();
    return stat(job.path.c_str(), &source) == 0 && source.st_dev == target.st_dev;
}

BatchRequest MakeFileRequest(const Verb& verb, const FileJob& job) {
    if (!job.error.empty()) return {};
    BatchRequest request;
    request.method = verb.method;
    if (job.destination.empty()) {
        request.payload = MakeTexts({{"file", job.path}});
    } else {
        request.payload = MakeTexts({{"source", job.path}, {"destination", job.destination}});
        request.extra = TimeToCopy(job.path) * kAtOnce;
    }
    return request;
}

// The plug-in's reason in plain words where they are known.
std::string PlainReason(const FileJob& job, const KXP::Document& answer) {
    const std::string text = Text(Payload(answer), "_return_status");
    const auto says = [&](const char* part) { return text.find(part) != std::string::npos; };
    if (says("not ZORVEX tracked UGC file")) return WhyNot(job.path, kNotOnRecord);
    if (says("'source' is not a valid file")) return WhyNot(job.path, "cannot be read");
    if (says("'source' is not a valid ZORVEX file")) return "not one of the product's own captures";
    if (says("Failed to copy file") || says("Failed to move file"))
        return "cannot be written to " + job.destination;
    if (says("Unable to delete file")) return "cannot be deleted";
    if (says("'destination' already exists")) return job.destination + " is there already";
    return ResultText(answer);
}

// Why the request failed; empty after a success.
std::string Reason(const Verb& verb, const FileJob& job, const KXP::Document& answer) {
    if (ResultCode(answer) < 0) return PlainReason(job, answer);
    // GetFileMetadata succeeds for any file, with no members for one that is not on record.
    const bool missing = verb.method == kLookUp && !Find(Payload(answer), "fileType");
    return missing ? WhyNot(job.path, kNotOnRecord) : "";
}

// What is done to a file once its request has succeeded. Returns the reason when it fails.
using Then = std::function<std::string(const FileJob& job)>;

std::string Nothing(const FileJob&) {
    return {};
}

void Run(Session& session, Output& output, const Verb& verb, const std::vector<FileJob>& jobs, bool json,
         size_t atOnce = kAtOnce, const Then& then = Nothing) {
    FileReport report(output, verb.done, verb.names, jobs.size(), json);
    try {
        Progress progress(verb.doing, jobs.size());
        AskInOrder(
            session, jobs.size(), [&](size_t index) { return MakeFileRequest(verb, jobs[index]); },
            [&](size_t index, const KXP::Document* answer) {
                const FileJob& job = jobs[index];
                std::string error = answer ? Reason(verb, job, *answer) : job.error;
                if (error.empty()) error = then(job);
                report.Add(job, error);
            },
            progress, atOnce);
    } catch (const Failure& failure) {
        if (report.HasEnded()) throw;
        throw Failure(failure.status(), std::string(failure.what()) + "; " + report.Summary() +
                                            ", and perhaps some that were in progress");
    }
    report.End();
}

std::string Trash(const FileJob& job, TrashBatch& batch) {
    const std::string error = MoveToTrash(job.path);
    if (error.empty()) batch.Add(job.path);
    return error.empty() ? error : error + "; --permanently removes it for good";
}

FileJob PlanOne(const std::string& name, const std::string& destination, bool into) {
    FileJob job{name, AbsolutePath(name), destination, {}};
    const std::string file = fs::path(job.path).filename().string();
    if (into) job.destination = (fs::path(destination) / file).string();
    if (file.empty()) job.error = WhyNot(job.path, "not a file");
    return job;
}

}  // namespace

std::vector<FileJob> PlanMoves(const std::vector<std::string>& paths) {
    const std::string& last = paths.back();
    const std::string destination = AbsolutePath(last);
    const bool into = IsFolder(destination) || destination.back() == '/';
    if (!into && paths.size() > 2)
        throw Failure(kExitFailed, last + ": not a folder; a new one is written with a / at its end");
    std::set<std::string> taken;
    std::vector<FileJob> jobs;
    for (size_t index = 0; index + 1 < paths.size(); ++index) {
        FileJob job = PlanOne(paths[index], destination, into);
        // Requests run at the same time, so chance would decide which of the two files stays.
        if (!taken.insert(job.destination).second) job.error = "another file goes to " + job.destination;
        jobs.push_back(std::move(job));
    }
    return jobs;
}

std::vector<FileJob> PlanCopies(const std::vector<std::string>& paths) {
    std::vector<FileJob> jobs = PlanMoves(paths);
    for (FileJob& job : jobs) {
        const std::string folder = fs::path(job.destination).parent_path().string();
        if (job.error.empty() && !IsFolder(folder)) job.error = "there is no folder " + folder;
    }
    return jobs;
}

std::vector<FileJob> PlanRemovals(const std::vector<std::string>& paths) {
    std::set<std::string> seen;
    std::vector<FileJob> jobs;
    for (const std::string& name : paths) {
        FileJob job{name, AbsolutePath(name), {}, {}};
        if (seen.insert(job.path).second) jobs.push_back(std::move(job));
    }
    return jobs;
}

void RunCopy(Session& session, Output& output, const std::vector<FileJob>& jobs, const FileOptions& options) {
    Run(session, output, kCopy, jobs, options.json);
}

void RunMove(Session& session, Output& output, const std::vector<FileJob>& jobs, const FileOptions& options) {
    // During a scan of the gallery the plug-in would wait in vain for each file to be on record.
    AwaitGallery(session);
    const bool quick = std::all_of(jobs.begin(), jobs.end(), StaysOnItsVolume);
    Run(session, output, kMove, jobs, options.json, quick ? kMovesAtOnce : kAtOnce);
}

void RunRemove(Session& session, Output& output, const std::vector<FileJob>& jobs,
               const FileOptions& options) {
    AwaitGallery(session);
    if (options.dryRun || options.permanently) {
        Run(session, output, options.dryRun ? kDryRun : kRemove, jobs, options.json);
        return;
    }
    TrashBatch batch;
    Run(session, output, kTrash, jobs, options.json, kAtOnce,
        [&batch](const FileJob& job) { return Trash(job, batch); });
}

}  // namespace host
