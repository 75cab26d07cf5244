// What was ever imported, one JSON object a line in a file beside the settings, so that the same picture or
// video is imported once. What is in no ledger yet, as it could be lost with the power, stands in a note for
// other imports that run meanwhile.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>

#include "base/FileDescriptor.h"
#include "base/WorkNote.h"

namespace importing {

struct ImportedFile {
    std::string picture;  // the digest of its picture's data
    std::string source;
    uint64_t size = 0;  // of the source
    int64_t time = 0;   // of the source, in ns since 1970
    std::string path;   // where it went
};

class ImportLedger {
  public:
    // Reads the file, if it is there. Lines that are damaged count as absent. Throws std::runtime_error when
    // it cannot be read: everything would be imported once more.
    explicit ImportLedger(std::string path);

    bool KnowsSource(const std::string& source, uint64_t size, int64_t time) const {
        return sources_.count({source, size, time}) > 0;
    }
    bool KnowsPicture(const std::string& picture) const { return pictures_.count(picture) > 0; }

    // Holds off all other imports until the result is closed, and knows what they have imported so far: of
    // two that look up the same picture and add it, the second knows it. Throws std::runtime_error.
    [[nodiscard]] KXP::FileDescriptor TakeTurn();

    // Is known from now on, also to other imports, and is in the file after the next Save.
    void Add(const ImportedFile& file);
    // Appends what was added. Throws std::runtime_error.
    void Save();

  private:
    void Know(const ImportedFile& file);
    void ReadLines(const KXP::FileDescriptor& file, uint64_t& position);
    void ReadNotes();

    const std::string path_;
    uint64_t read_ = 0;                          // of the file
    std::map<std::string, uint64_t> notesRead_;  // of each note
    std::unique_ptr<KXP::WorkNote> note_;        // of what is unsaved
    std::set<std::tuple<std::string, uint64_t, int64_t>> sources_;
    std::set<std::string> pictures_;
    std::string unsaved_;
};

}  // namespace importing
