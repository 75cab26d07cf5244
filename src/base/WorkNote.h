// Notes of work under way on files, for the case that the process is killed in the middle of it: the note
// then stays, and the next start of the product settles what it describes. A note belongs to the process that
// wrote it for as long as that lives, by a lock on its file, which ends with the process.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "base/FileDescriptor.h"

namespace KXP {

// Removed when it is destroyed: the work has then ended, well or not. Belongs to one thread.
class WorkNote {
  public:
    // Creates an empty note in an existing folder. `kind` is the start of its name. IsOpen is false, with
    // errno set, when that fails.
    WorkNote(const std::string& folder, const std::string& kind);
    ~WorkNote();
    WorkNote(const WorkNote&) = delete;
    WorkNote& operator=(const WorkNote&) = delete;

    bool IsOpen() const { return file_.IsOpen(); }

    // Adds text, which outlasts the process when this returns. False with errno set; a part of the text may
    // then be there.
    bool Add(std::string_view text);
    // The same, and it outlasts a loss of power.
    bool AddDurably(std::string_view text);

  private:
    std::string path_;
    FileDescriptor file_;
};

// Calls `settle` with the text of each note of this kind in the folder whose process has ended. Text that was
// being added when the process died may be cut off. The note is removed when `settle` returns true; one that
// cannot be settled now, on a drive that is away for example, stays for the next call, for 90 days.
void SettleWorkNotes(const std::string& folder, const std::string& kind,
                     const std::function<bool(const std::string& text)>& settle);

}  // namespace KXP
