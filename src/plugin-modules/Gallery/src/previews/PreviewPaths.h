// The files that the pages have named as their previews, which are deleted when they are done with, and what
// may be deleted as one.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "common/RetVal.h"

// Worker, or whoever has it last.
class PreviewPaths {
  public:
    void Remember(const std::vector<std::string>& paths) { paths_.insert(paths.begin(), paths.end()); }
    const std::set<std::string>& All() const { return paths_; }

    // Deletes a preview and forgets it. A page can name any path: it is one if it was remembered or lies in
    // the folder for temporary files itself, and if it is a regular file. Else nothing is touched, and the
    // answer is 0x80070057.
    KXP::RetVal Delete(const std::string& path, const std::string& tempFolder);

  private:
    std::set<std::string> paths_;
};
