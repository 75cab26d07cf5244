// The files that a rebuild puts on record, oldest first, and what the tracker's old file says of them. A file
// that is as it was need not be inspected again. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "plugin-modules/Gallery/src/tracker/GalleryScan.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

class RebuildPlan {
  public:
    using Order = std::vector<std::pair<int64_t, size_t>>;  // times and indexes

    // The old records.
    struct Former {
        std::vector<NewUGC> records;
        // The file is as the product left it and the records have their stamps. If not, anybody may have
        // written it.
        bool isOwn = false;

        // None unless the file is own.
        void TakeStamps(const std::optional<std::vector<FileStamp>>& stamps);
    };
    struct Step {
        std::string path;
        // What the old file said of the path, if that is, or may be, still so; else null.
        NewUGC former;
        bool unchanged = false;  // the file is the one that `former` is of
    };

    // `keepsInodes` is whether the volume gives a file the same inode number each time. In folders that could
    // not be read the old records are right until somebody knows better.
    RebuildPlan(FoundFiles found, Former former, bool keepsInodes);

    size_t size() const { return items_.size(); }
    // No value after the last step.
    std::optional<Step> Next();

  private:
    static constexpr size_t kNone = SIZE_MAX;

    struct Item {
        FoundFile file;
        size_t former = kNone;  // its index
        bool unchanged = false;
    };

    void SortItems();
    std::vector<bool> FindFormer();

    std::vector<Item> items_;
    Order order_;  // of items
    std::vector<NewUGC> former_;
    const bool isOwn_;
    size_t next_ = 0;
};
