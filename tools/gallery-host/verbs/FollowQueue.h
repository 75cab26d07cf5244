// Recordings that may not be finished yet.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "gallery-host/base/Deadline.h"

namespace host {

// What changes while somebody writes to a file.
struct FileState {
    uint64_t size = 0;
    int64_t time = 0;     // of the last change, in ns since 1970
    bool isOpen = false;  // for writing

    bool operator==(const FileState& other) const {
        return size == other.size && time == other.time && isOpen == other.isOpen;
    }
};

// A recording is finished when nobody has it open for writing and nothing has changed for a while: recorders
// close a file and open it again to write its tables. Pure; for one thread.
class FollowQueue {
  public:
    // Nothing for a file that is gone.
    using Look = std::function<std::optional<FileState>(const std::string& path)>;

    FollowQueue(std::chrono::milliseconds quiet, Look look) : quiet_(quiet), look_(std::move(look)) {}

    // There is a file, or it has changed.
    void Note(const std::string& path, Deadline now);
    // Those that are finished, in the order of their names; they wait no more.
    std::vector<std::string> TakeFinished(Deadline now);
    // When to call TakeFinished next; never while there is nothing to wait for.
    Deadline due() const;

  private:
    struct Waiting {
        FileState state;
        Deadline since;  // when it was like that for the first time
    };

    const std::chrono::milliseconds quiet_;
    const Look look_;
    std::map<std::string, Waiting> waiting_;
};

}  // namespace host
