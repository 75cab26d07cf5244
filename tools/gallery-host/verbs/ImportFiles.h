// The files that an import takes of what it is asked for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

// Whether the path is the folder or below it.
bool IsInside(const std::string& path, const std::string& folder);

class ImportFiles {
  public:
    // Nothing below the gallery is taken.
    explicit ImportFiles(std::string gallery) : gallery_(std::move(gallery)) {}

    // A file, or a folder with all below it: in the order of names, without hidden files, links, and files
    // that are neither pictures nor videos. Throws Failure for a path in the gallery.
    void Add(const std::string& path);

    struct Found {
        std::string path;
        uint64_t size;
    };
    const std::vector<Found>& files() const { return files_; }
    uint64_t bytes() const { return bytes_; }

  private:
    void AddFile(const std::string& path);
    void AddFolder(const std::string& folder, int depth);

    const std::string gallery_;
    std::vector<Found> files_;
    uint64_t bytes_ = 0;
};

}  // namespace host
