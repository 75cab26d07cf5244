#include "gallery-host/verbs/ImportVerb.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "base/FolderReader.h"
#include "common/files/DirUtil.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/Progress.h"
#include "gallery-host/output/Words.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Verbs.h"
#include "importing/Importer.h"
#include "libraries/share-common/ShareFolder.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLedgerName = "Imported.jsonl";
// What a kill costs at most is reading so many once more.
constexpr size_t kFilesAtOnce = 64;
constexpr int kDeepest = 40;

// The files below a folder, in the order of their names, without hidden ones and links.
void AddFilesIn(const std::string& folder, int depth, std::vector<std::string>& files) {
    std::vector<std::string> found;
    std::vector<std::string> folders;
    KXP::FolderReader reader(folder);
    if (!reader.IsOpen()) {
        Say(folder + ": " + std::strerror(errno));
        return;
    }
    while (reader.Next()) {
        if (reader.Name()[0] == '.' || reader.IsLink()) continue;
        const std::string path = (fs::path(folder) / reader.Name()).string();
        (reader.IsFolder() ? folders : found).push_back(path);
    }
    std::sort(found.begin(), found.end());
    std::sort(folders.begin(), folders.end());
    files.insert(files.end(), found.begin(), found.end());
    for (const std::string& path : folders)
        if (depth < kDeepest) AddFilesIn(path, depth + 1, files);
}

bool IsInside(const std::string& path, const std::string& folder) {
    return path.compare(0, folder.size(), folder) == 0 &&
           (path.size() == folder.size() || path[folder.size()] == '/');
}

class Run {
  public:
    Run(Output& output, const ImportVerbOptions& options, importing::Importer& importer)
        : output_(output), options_(options), importer_(importer) {}

    void Import(const std::string& path) {
        try {
            if (options_.dryRun) {
                Report(path, importer_.Check(path), "");
                return;
            }
            const importing::Importer::Result result = importer_.Import(path);
            if (result.outcome == importing::Importer::Outcome::kKnown)
                Pass(path);
            else
                Report(path, result.path, "");
        } catch (const importing::ImportError& error) {
            Report(path, "", error.what());
        }
    }

    void Commit() {
        for (const std::string& path : importer_.Commit())
            Say(Printable(path) + ": stays, as its copy could not be verified");
    }

    void End() const {
        std::string text =
            Counted(imported_, "file") + (options_.dryRun ? " would be imported" : " imported");
        if (known_ > 0) text += ", " + std::to_string(known_) + " known already";
        if (failed_ > 0) throw Failure(kExitFailed, text + ", " + std::to_string(failed_) + " not");
        Say(text);
    }

  private:
    void Pass(const std::string& path) {
        ++known_;
        if (!options_.json) return;
        KXP::Document line = MakeTexts({{"file", path}});
        line.AddMember("known", true, line.GetAllocator());
        WriteOutcome(output_, std::move(line), "");
    }

    void Report(const std::string& path, const std::string& destination, const std::string& error) {
        ++(error.empty() ? imported_ : failed_);
        if (options_.json) {
            KXP::Document line = MakeTexts({{"file", path}});
            if (!destination.empty()) AddText(line, "destination", destination);
            WriteOutcome(output_, std::move(line), error);
        } else if (!error.empty()) {
            Say(Printable(path) + ": " + error);
        } else if (options_.dryRun) {
            output_.Write(Printable(path) + " -> " + Printable(destination) + "\n");
        }
    }

    Output& output_;
    const ImportVerbOptions& options_;
    importing::Importer& importer_;
    size_t imported_ = 0;
    size_t known_ = 0;
    size_t failed_ = 0;
};

}  // namespace

void RunImport(Session& session, Output& output, Interrupt& interrupt, const ImportVerbOptions& options) {
    std::vector<std::string> files;
    const std::string gallery = Text(AskSettings(session), "path");
    for (const std::string& path : options.paths) {
        if (IsInside(path, gallery)) throw Failure(kExitFailed, path + ": is in the gallery already");
        if (IsFolder(path))
            AddFilesIn(path, 0, files);
        else
            files.push_back(path);
    }
    files.erase(std::remove_if(files.begin(), files.end(),
                               [&](const std::string& file) { return IsInside(file, gallery); }),
                files.end());
    importing::ImportLedger ledger(KXP::CreateDirectoryPath(GetShareFolderPath()) + "/" + kLedgerName);
    importing::Importer importer({gallery, options.game, options.highlight, options.time, options.move},
                                 ledger);
    Run run(output, options, importer);
    Progress progress("importing", files.size());
    for (size_t i = 0; i < files.size(); ++i) {
        if (interrupt.Take()) {
            run.Commit();
            throw Failure(kExitInterrupted, "interrupted; the rest follows when it is run again");
        }
        run.Import(files[i]);
        if (i % kFilesAtOnce == kFilesAtOnce - 1) run.Commit();
        progress.Advance();
        progress.Draw();
        session.Pump(std::chrono::steady_clock::now());
    }
    run.Commit();
    run.End();
}

}  // namespace host
