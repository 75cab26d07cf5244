// What became of the files of a verb.
#pragma once

#include <cstddef>
#include <string>

#include "gallery-host/base/Output.h"

namespace host {

// What to do with one file.
struct FileJob {
    std::string name;  // as the user wrote it
    std::string path;  // absolute
    std::string destination;
    std::string error;  // why nothing is tried
};

// Reports each file, and at the end all of them.
class FileReport {
  public:
    // `done` says what was done to a file, such as "copied"; `names` prints the path of each.
    FileReport(Output& output, const char* done, bool names, size_t count, bool json)
        : output_(output), doneWord_(done), names_(names), count_(count), json_(json) {}

    // `error` is empty after a success. With JSON each file is a line of standard output. Throws
    // Failure(kExitFailed) for the failure of an only file.
    void Add(const FileJob& job, const std::string& error);

    // For example "1 of 2 files copied".
    std::string Summary() const;
    bool HasEnded() const { return reported_ == count_; }
    // Says the summary; throws Failure(kExitFailed) with it when a file failed.
    void End() const;

  private:
    void WriteLine(const FileJob& job, const std::string& error);

    Output& output_;
    const char* const doneWord_;
    const bool names_;
    const size_t count_;
    const bool json_;
    size_t reported_ = 0;
    size_t done_ = 0;
};

}  // namespace host
