// The file of kept facts, to which several processes append. An appender locks the file, and so does who
// replaces it; the lock ends with its process. What others append is read from where the last call stopped.
//
// Not synchronised inside the process: one thread at a time. Calls may log, and wait for other processes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>

#include "base/FileDescriptor.h"
#include "common/results/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptCapture.h"

class KeptFile {
  public:
    explicit KeptFile(std::string path) : path_(std::move(path)) {}

    struct Line {
        KeptPtr capture;
        size_t bytes;  // with the line feed
    };
    using Lines = std::vector<Line>;

    // Each call adds to `others` the lines that other processes have written since the last one, or all lines
    // if the file was replaced. Damaged ones are passed over with one log line. A call fails with 0x80004005,
    // the system's text and errno; the file then holds what it held before.

    // One stat when there is nothing new. A missing file is no failure.
    KXP::RetVal ReadNew(Lines& others);
    // Adds whole lines, which outlast a loss of power when this returns. Makes the file if it is missing.
    KXP::RetVal Append(std::string_view lines, Lines& others);
    // Replaces the content by what `content` returns for the others' lines, or keeps it for none. There is
    // the old file or the whole new one at any time.
    KXP::RetVal Replace(const std::function<std::optional<std::string>(const Lines& others)>& content);

    // How much of the file was read and written, which is all of it after a call.
    uint64_t size() const { return read_; }

  private:
    bool IsFollowed(const struct stat& status) const;
    bool CatchUp(Lines& others);
    bool ReadRest(Lines& others);
    void Follow(KXP::FileDescriptor file, uint64_t read);

    const std::string path_;
    // Stays open, so that its number does not become that of another file, and so that it can be read to its
    // end after another process has replaced it.
    KXP::FileDescriptor followed_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
    uint64_t read_ = 0;
    bool endsInsideLine_ = false;  // an append was cut off by a kill
};
