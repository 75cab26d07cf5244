#include "gallery-host/verbs/ImportVerb.h"

#include <chrono>
#include <utility>

#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/TransferProgress.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/ImportFiles.h"
#include "gallery-host/verbs/ImportFollow.h"
#include "gallery-host/verbs/ImportRun.h"

namespace host {
namespace {

// What a kill costs at most is reading so much once more.
constexpr uint64_t kBytesAtOnce = uint64_t{1} << 30;

constexpr std::chrono::milliseconds kBetweenPumps{10};

class Interrupted {};

importing::ImportOptions OptionsOf(const ImportVerbOptions& options, const std::string& gallery,
                                   importing::ReadListener onRead) {
    return {gallery,          options.game, options.highlight,
            options.time,     options.move, InProduct("Frameworks/dependencies"),
            std::move(onRead)};
}

}  // namespace

void RunImport(Session& session, Output& output, Interrupt& interrupt, const ImportVerbOptions& options) {
    const std::string gallery = Text(AskSettings(session), "path");
    if (options.follow) {
        const auto onRead = [&](uint64_t) { session.Pump(std::chrono::steady_clock::now()); };
        ImportRun run(output, {options.dryRun, options.json, true}, OptionsOf(options, gallery, onRead));
        FollowFolder(session, run, options.paths.front(), gallery);
        return;
    }
    ImportFiles list(gallery);
    for (const std::string& path : options.paths)
        list.Add(path);
    TransferProgress progress("importing", list.bytes());
    uint64_t read = 0;
    Deadline next;
    const auto onRead = [&](uint64_t bytes) {
        read += bytes;
        progress.Advance(bytes);
        const Deadline now = std::chrono::steady_clock::now();
        if (now < next) return;
        next = now + kBetweenPumps;
        progress.Draw();
        session.Pump(now);
        if (interrupt.Take()) throw Interrupted();
    };
    ImportRun run(output, {options.dryRun, options.json, false}, OptionsOf(options, gallery, onRead));
    try {
        uint64_t committed = 0;
        const std::vector<ImportFiles::Found>& files = list.files();
        for (size_t i = 0; i < files.size(); ++i) {
            const ImportFiles::Found& file = files[i];
            const uint64_t before = read;
            onRead(0);
            if (i + 1 < files.size()) run.Prepare(files[i + 1].path);
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
