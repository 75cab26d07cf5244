#include "gallery-host/verbs/ImportRun.h"

#include <utility>

#include "common/files/DirUtil.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/Words.h"
#include "gallery-host/verbs/Verbs.h"
#include "libraries/share-common/ShareFolder.h"

namespace host {
namespace {

constexpr const char* kLedgerName = "Imported.jsonl";

}  // namespace

ImportRun::ImportRun(Output& output, ImportRunOptions options, importing::ImportOptions importOptions)
    : output_(output),
      options_(options),
      ledger_(KXP::CreateDirectoryPath(GetShareFolderPath()) + "/" + kLedgerName),
      importer_(std::move(importOptions), ledger_) {}

void ImportRun::Import(const std::string& path) {
    try {
        const importing::Importer::Result result =
            options_.dryRun ? importer_.Check(path) : importer_.Import(path);
        if (result.outcome == importing::Importer::Outcome::kKnown)
            Pass(path);
        else
            Report(path, result.path);
    } catch (const importing::ImportError& error) {
        Refuse(path, error.what());
    }
}

void ImportRun::Commit() {
    for (const std::string& path : importer_.Commit())
        Say(Printable(path) + ": stays, as its copy could not be verified");
}

void ImportRun::End() const {
    if (failed_ > 0) throw Failure(kExitFailed, Summary());
    Say(Summary());
}

std::string ImportRun::Summary() const {
    std::string text = Counted(imported_, "file") + (options_.dryRun ? " would be imported" : " imported");
    if (known_ > 0) text += ", " + std::to_string(known_) + " known already";
    if (failed_ > 0) text += ", " + std::to_string(failed_) + " not";
    return text;
}

void ImportRun::Pass(const std::string& path) {
    ++known_;
    if (!options_.json) return;
    KXP::Document line = MakeTexts({{"file", path}});
    line.AddMember("known", true, line.GetAllocator());
    WriteOutcome(output_, std::move(line), "");
}

void ImportRun::Report(const std::string& path, const std::string& destination) {
    ++imported_;
    if (options_.json)
        WriteOutcome(output_, MakeTexts({{"file", path}, {"destination", destination}}), "");
    else if (options_.dryRun || options_.names)
        output_.Write(Printable(path) + " -> " + Printable(destination) + "\n");
}

void ImportRun::Refuse(const std::string& path, const std::string& error) {
    ++failed_;
    if (options_.json)
        WriteOutcome(output_, MakeTexts({{"file", path}}), error);
    else
        Say(Printable(path) + ": " + error);
}

}  // namespace host
