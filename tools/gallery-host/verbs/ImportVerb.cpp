#include "gallery-host/verbs/ImportVerb.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <utility>

#include <sys/stat.h>

#include "base/FolderReader.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/TransferProgress.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/ImportRun.h"
#include "gallery-host/verbs/Verbs.h"
#include "importing/CapturePlace.h"

namespace host {
namespace {

namespace fs = std::filesystem;

// What a kill costs at most is reading so much once more.
constexpr uint64_t kBytesAtOnce = uint64_t{1} << 30;
constexpr int kDeepest = 40;

struct Found {
    std::string path;
    uint64_t size;
};

bool IsInside(const std::string& path, const std::string& folder) {
    return path.compare(0, folder.size(), folder) == 0 &&
           (path.size() == folder.size() || path[folder.size()] == '/');
}

class FileList {
  public:
    explicit FileList(std::string gallery) : gallery_(std::move(gallery)) {}

    void Add(const std::string& path) {
        if (IsInside(path, gallery_)) throw Failure(kExitFailed, path + ": is in the gallery already");
        if (IsFolder(path))
            AddFolder(path, 0);
        else
            AddFile(path);
    }

    const std::vector<Found>& files() const { return files_; }
    uint64_t bytes() const { return bytes_; }

  private:
    void AddFile(const std::string& path) {
        struct stat status {};
        const bool isThere = stat(path.c_str(), &status) == 0;
        files_.push_back({path, isThere ? static_cast<uint64_t>(status.st_size) : 0});
        bytes_ += files_.back().size;
    }

    // In the order of names, without hidden files, links, and files that are neither pictures nor videos.
    void AddFolder(const std::string& folder, int depth) {
        std::vector<std::string> found;
        std::vector<std::string> folders;
        KXP::FolderReader reader(folder);
        if (!reader.IsOpen()) Say(Printable(folder) + ": " + std::strerror(errno));
        while (reader.Next()) {
            if (reader.Name()[0] == '.' || reader.IsLink()) continue;
            const std::string path = (fs::path(folder) / reader.Name()).string();
            if (reader.IsFolder())
                folders.push_back(path);
            else if (importing::HasMediaEnding(path))
                found.push_back(path);
        }
        std::sort(found.begin(), found.end());
        std::sort(folders.begin(), folders.end());
        for (const std::string& path : found)
            AddFile(path);
        for (const std::string& path : folders)
            if (depth < kDeepest && !IsInside(path, gallery_)) AddFolder(path, depth + 1);
    }

    const std::string gallery_;
    std::vector<Found> files_;
    uint64_t bytes_ = 0;
};

class Interrupted {};

}  // namespace

void RunImport(Session& session, Output& output, Interrupt& interrupt, const ImportVerbOptions& options) {
    const std::string gallery = Text(AskSettings(session), "path");
    FileList list(gallery);
    for (const std::string& path : options.paths)
        list.Add(path);
    TransferProgress progress("importing", list.bytes());
    uint64_t read = 0;
    const auto onRead = [&](uint64_t bytes) {
        read += bytes;
        progress.Advance(bytes);
        progress.Draw();
        session.Pump(std::chrono::steady_clock::now());
        if (interrupt.Take()) throw Interrupted();
    };
    ImportRun run(output, {options.dryRun, options.json, false},
                  {gallery, options.game, options.highlight, options.time, options.move,
                   InProduct("Frameworks/dependencies"), onRead});
    try {
        uint64_t committed = 0;
        for (const Found& file : list.files()) {
            const uint64_t before = read;
            onRead(0);
            run.Import(file.path);
            if (read == before) progress.Skip(file.size);
            if (read - committed < kBytesAtOnce) continue;
            run.Commit();
            committed = read;
        }
    } catch (const Interrupted&) {
        run.Commit();
        throw Failure(kExitInterrupted, "interrupted; the rest follows when it is run again");
    } catch (...) {
        run.Commit();
        throw;
    }
    run.Commit();
    run.End();
}

}  // namespace host
