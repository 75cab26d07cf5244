#include "gallery-host/verbs/Restore.h"

#include <algorithm>
#include <set>

#include "base/Path.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/TextTable.h"
#include "gallery-host/output/Words.h"
#include "gallery-host/trash/LastTrashed.h"
#include "gallery-host/trash/Trash.h"
#include "gallery-host/verbs/FileReport.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Verbs.h"

namespace host {
namespace {

struct Choice {
    FileJob job;
    const TrashedFile* file = nullptr;
};

Choice ChoiceOf(const TrashedFile& file) {
    return {{file.path, file.path, {}, {}}, &file};
}

// `trashed` begins with what was deleted last, so that the first of several is the one to take.
Choice ChooseNamed(const std::string& name, const std::string& gallery,
                   const std::vector<TrashedFile>& trashed, const std::vector<Choice>& taken) {
    const std::set<std::string> paths = {AbsolutePath(name), KXP::Tidied(gallery + "/" + name)};
    const auto fits = [&](const TrashedFile& file) {
        const bool isTaken =
            std::any_of(taken.begin(), taken.end(), [&](const Choice& other) { return other.file == &file; });
        return !isTaken && (KXP::NameOf(file.path) == name || paths.count(file.path) != 0);
    };
    const auto found = std::find_if(trashed.begin(), trashed.end(), fits);
    if (found == trashed.end()) return {{name, AbsolutePath(name), {}, "not in the trash"}, nullptr};
    Choice choice = ChoiceOf(*found);
    choice.job.name = name;
    return choice;
}

std::vector<Choice> ChooseLast(const std::vector<TrashedFile>& trashed) {
    if (trashed.empty()) throw Failure(kExitFailed, "the trash holds nothing of the gallery");
    std::set<std::string> batch = LastTrashed();
    if (batch.count(trashed[0].path) == 0) return {ChoiceOf(trashed[0])};
    std::vector<Choice> choices;
    for (const TrashedFile& file : trashed)
        if (batch.erase(file.path) != 0) choices.push_back(ChoiceOf(file));
    return choices;
}

void RestoreAll(Output& output, const std::vector<Choice>& choices, bool json) {
    FileReport report(output, "restored", true, choices.size(), json);
    for (const Choice& choice : choices)
        report.Add(choice.job, choice.file ? Restore(*choice.file) : choice.job.error);
    report.End();
}

std::string DateOf(const TrashedFile& file) {
    std::string date = file.deleted.substr(0, sizeof "2026-03-14T18:06" - 1);
    std::replace(date.begin(), date.end(), 'T', ' ');
    return date.empty() ? "-" : date;
}

void WriteList(Output& output, const std::vector<TrashedFile>& trashed, bool json) {
    std::vector<TableRow> rows;
    KXP::Document list(rapidjson::kArrayType);
    for (const TrashedFile& file : trashed) {
        rows.push_back({{Printable(file.path), "deleted " + DateOf(file)}, kBold});
        list.PushBack(
            KXP::Value(MakeTexts({{"file", file.path}, {"deleted", file.deleted}}), list.GetAllocator()),
            list.GetAllocator());
    }
    if (json) {
        WriteJson(output, list);
        return;
    }
    if (!rows.empty()) output.Write(TableText(rows, WantsColour()));
    Say(Counted(rows.size(), "file") + " of the gallery in the trash");
}

}  // namespace

void RunRestore(Session& session, Output& output, const RestoreOptions& options) {
    // After a scan that knows of their absence the record takes them for those that it had.
    const std::string gallery = AwaitGallery(session);
    const std::vector<TrashedFile> trashed = ListTrashed(gallery);
    if (options.list) {
        WriteList(output, trashed, options.json);
        return;
    }
    std::vector<Choice> choices;
    if (options.names.empty()) choices = ChooseLast(trashed);
    for (const std::string& name : options.names)
        choices.push_back(ChooseNamed(name, gallery, trashed, choices));
    RestoreAll(output, choices, options.json);
}

}  // namespace host
