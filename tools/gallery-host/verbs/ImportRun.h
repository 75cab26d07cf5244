// Imports file by file, and says what became of each.
#pragma once

#include <optional>
#include <string>

#include "gallery-host/base/Output.h"
#include "importing/ImportLedger.h"
#include "importing/Importer.h"

namespace host {

struct ImportRunOptions {
    bool dryRun = false;
    bool json = false;
    bool names = false;  // also of the files that were imported
};

class ImportRun {
  public:
    // Throws std::runtime_error when what was imported before cannot be read.
    ImportRun(Output& output, ImportRunOptions options, importing::ImportOptions importOptions);

    // For the file after the one that comes next.
    void Prepare(const std::string& path) {
        if (!options_.dryRun) importer_.Prepare(path);
    }
    // A file that cannot be imported is reported.
    void Import(const std::string& path);
    // Makes what was imported so far outlast a loss of power, and removes sources that are moved.
    void Commit();
    // Throws Failure when some files could not be imported.
    void End() const;

  private:
    void Pass(const std::string& path);
    void Report(const std::string& path, const std::string& destination);
    void Refuse(const std::string& path, const std::string& error);
    std::string Summary() const;

    Output& output_;
    const ImportRunOptions options_;
    importing::ImportLedger ledger_;
    importing::Importer importer_;
    size_t imported_ = 0;
    size_t known_ = 0;
    size_t failed_ = 0;
};

}  // namespace host
