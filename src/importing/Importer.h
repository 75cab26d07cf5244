// Copies files of other recorders into the gallery, as captures of the product. For one thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "importing/ImportLedger.h"
#include "importing/ImportSource.h"

namespace importing {

struct ImportOptions {
    std::string gallery;          // exists
    std::string game;             // empty for that of each file
    std::string highlight;        // its name; empty for ordinary captures
    std::optional<int64_t> time;  // of the captures, in ns since 1970; else that of each source
    bool move = false;
};

class Importer {
  public:
    Importer(ImportOptions options, ImportLedger& ledger) : options_(std::move(options)), ledger_(ledger) {}

    enum class Outcome { kImported, kKnown };
    struct Result {
        Outcome outcome;
        std::string path;  // of the capture; empty for one that was known
    };

    // Where the file would go, if nothing has that name. Throws ImportError for one that cannot be imported.
    std::string Check(const std::string& path) const;

    // Whole or not at all. Throws ImportError, also for a disk that is full.
    Result Import(const std::string& path);

    // Makes what was imported since the last call outlast a loss of power, notes it, and then removes the
    // sources that are to be moved. Returns those that stay, as their copies could not be verified. Throws
    // std::runtime_error.
    std::vector<std::string> Commit();

  private:
    std::string PlaceOf(const ImportSource& source) const;
    std::string FreePlace(const std::string& place) const;
    CaptureMarks MarksOf(const std::string& source) const;
    bool IsSameAs(const std::string& place, const std::string& picture) const;

    const ImportOptions options_;
    ImportLedger& ledger_;
    std::vector<ImportedFile> pending_;
};

}  // namespace importing
