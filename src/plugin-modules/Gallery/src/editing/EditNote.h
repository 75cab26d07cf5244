// Notes in the share folder on trims in place, one for each: the capture, and the clip beside it that is to
// take its place. If the process is killed, the next start finds in them what it has left.
#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "base/WorkNote.h"
#include "plugin-modules/Gallery/src/tracker/record/FileStamp.h"

// The path of the clip: "_tmp" is put before the capture's extension, with the number of the attempt from the
// second one on.
std::string ClipPath(const std::string& capture, int attempt);
// Attempts are numbered from 1 to this.
constexpr int kClipAttempts = 100;

// Belongs to one thread. Lives until the clip is in its place or removed.
class EditNote {
  public:
    // Nothing is at the clip's path yet. The note is durable when this returns; IsOpen is false when that
    // failed.
    EditNote(const std::string& shareFolder, const std::string& capture, int attempt);

    bool IsOpen() const { return isOpen_; }

    // Notes durably that the clip is whole and replaces the capture from now on. False when that fails.
    bool SetWhole(const FileStamp& capture, const FileStamp& clip);

  private:
    KXP::WorkNote note_;
    bool isOpen_ = false;
};

// What a note says. Anybody can edit it.
struct NotedEdit {
    // No value for a text that is no note. A cut off end is as if it had not been added.
    static std::optional<NotedEdit> Parse(const std::string& text);

    struct Whole {
        FileStamp capture;
        FileStamp clip;
    };

    std::string capture;  // a full path
    int attempt = 1;
    time_t begun = 0;
    std::optional<Whole> whole;  // once the clip is
};
