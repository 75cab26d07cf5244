// The files that pages have named as their previews, and the rule for which files may be deleted as previews.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "common/results/RetVal.h"

// One thread at a time.
class PreviewPaths {
  public:
    void Remember(const std::vector<std::string>& paths) { paths_.insert(paths.begin(), paths.end()); }
    const std::set<std::string>& All() const { return paths_; }

    // Deletes a preview and forgets it. A page can name any path; it counts as a preview if it is a regular
    // file and was remembered or lies directly in `tempFolder`. Any other is left alone: 0x80070057.
    KXP::RetVal Delete(const std::string& path, const std::string& tempFolder);

  private:
    std::set<std::string> paths_;
};
