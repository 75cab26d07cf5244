// What one command moved to the trash last, so that all of it can be restored at once. It is kept in the
// product's folder.
#pragma once

#include <set>
#include <string>

#include "base/FileDescriptor.h"

namespace host {

// The files of one command. Belongs to one thread.
class TrashBatch {
  public:
    // Adds a file that is in the trash now; the first one makes the batch the last. A batch that cannot be
    // kept still lets its files be restored one by one.
    void Add(const std::string& path);

  private:
    KXP::FileDescriptor file_;
    bool begun_ = false;
};

// The paths that the files of the last batch had.
std::set<std::string> LastTrashed();

}  // namespace host
