#include "gallery-host/verbs/FileReport.h"

#include <utility>

#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/Words.h"
#include "gallery-host/verbs/Verbs.h"

namespace host {

void FileReport::Add(const FileJob& job, const std::string& error) {
    ++reported_;
    if (json_) WriteLine(job, error);
    if (error.empty()) {
        ++done_;
        if (!json_ && names_) output_.Write(Printable(job.path) + "\n");
        return;
    }
    const std::string line = job.name + ": " + error;
    if (count_ == 1) throw Failure(kExitFailed, line);
    Say(line);
}

std::string FileReport::Summary() const {
    if (done_ == count_) return Counted(count_, "file") + " " + doneWord_;
    return std::to_string(done_) + " of " + Counted(count_, "file") + " " + doneWord_;
}

void FileReport::End() const {
    if (done_ < count_) throw Failure(kExitFailed, Summary());
    Say(Summary());
}

void FileReport::WriteLine(const FileJob& job, const std::string& error) {
    KXP::Document line = MakeTexts({{"file", job.path}});
    if (!job.destination.empty()) AddText(line, "destination", job.destination);
    WriteOutcome(output_, std::move(line), error);
}

}  // namespace host
