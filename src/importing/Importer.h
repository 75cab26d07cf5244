// Copies files of other recorders into the gallery, as captures of the product. For one thread.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "importing/CaptureCopy.h"
#include "importing/ImportLedger.h"
#include "importing/ImportSource.h"

namespace importing {

struct ImportOptions {
    std::string gallery;          // exists
    std::string game;             // empty for that of each file
    std::string highlight;        // its name; empty for ordinary captures
    std::optional<int64_t> time;  // of the captures, in ns since 1970; else that of each source
    bool move = false;
    std::string libraries;  // the folder with the media library, which videos need
    ReadListener onRead;    // what it throws leaves nothing of the file that is being imported
};

class Importer {
  public:
    Importer(ImportOptions options, ImportLedger& ledger)
        : options_(std::move(options)), ledger_(ledger), videos_(options_.libraries, digests_) {}

    enum class Outcome { kImported, kKnown };
    struct Result {
        Outcome outcome;
        std::string path;  // of the capture; empty for one that was known
    };

    // What Import would do, without the data of the picture: one under another name counts as new. Throws
    // ImportError for a file that cannot be imported.
    Result Check(const std::string& path);

    // For a file that is to be imported after the one at hand: begins to read it. A picture is in memory by
    // then, as far as there was nothing else to do.
    void Prepare(const std::string& path);

    // Whole or not at all. Throws ImportError, also for a disk that is full.
    Result Import(const std::string& path);

    // Makes what was imported since the last call outlast a loss of power, notes it, and then removes the
    // sources that are to be moved. Returns those that stay, as their copies could not be verified. Throws
    // std::runtime_error.
    std::vector<std::string> Commit();

  private:
    CaptureMarks MarksOf(const std::string& source) const;
    std::unique_ptr<const ImportSource> Open(const std::string& path);
    void OpenPrepared() noexcept;

    const ImportOptions options_;
    ImportLedger& ledger_;
    PictureMemory pictures_[2];
    size_t current_ = 0;                        // of those
    std::string prepared_;                      // path
    std::unique_ptr<const ImportSource> next_;  // the prepared one, with a picture in the other memory
    DigestThread digests_;
    VideoLibrary videos_;
    std::vector<ImportedFile> pending_;
};

}  // namespace importing
