// The command line of the verbs that bring captures into the gallery.
#include <ctime>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/commandline/CommandLine.h"
#include "gallery-host/verbs/ImportVerb.h"

namespace host {
namespace {

constexpr const char* kImportFooter = R"(Examples:
  gallery-host import ~/Videos/Recordings
  gallery-host import --app "Rustwind Rally" --move *.png
  gallery-host import --dry-run ~/Pictures/Screenshots
  gallery-host import --follow ~/Videos/Recordings
PNG, JPEG and MP4 become captures: the pictures and frames stay as they are, and the name of the game is added. MKV,
WebM, MOV, FLV, TS and MP4 in fragments become MP4 without encoding. One that MP4 does not take whole, because of ProRes
or the subtitles of an MKV for example, is refused: no track is left out. Nothing is overwritten, and what was imported
once is passed over, whatever its name and container are by then.
The game is --app; else the name of the file's folder, unless that is one such as Videos, Pictures or Screenshots; else
the file's name up to its date, without words such as Screenshot; else Other.
In a folder, files that are neither pictures nor videos by their ending, hidden ones and links are passed over.
Without --move the sources stay; with it each goes once its copy was read again and has the same picture.
With --follow the files of one folder are imported, and then each that comes once it is finished, until Ctrl-C.
Ctrl-C leaves whole files alone, and the next run goes on with the rest. After a failure the other files still have
their turn, and the exit status is 1.
With --json each file is a line
  {"file":"/home/me/a.png","destination":"/home/me/Videos/ZORVEX/Ovirastream/Tide/a.png","ok":true}
or has "known":true, or "ok":false and the reason as "error".
)";

constexpr const char* kDateHelp =
    "their date instead of the files' own, such as 2026-11-22 or \"2026-11-22 10:30\"";

// Local time; nothing for any other text.
std::optional<int64_t> ReadDate(const std::string& text) {
    for (const char* form : {"%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S", "%Y-%m-%d %H:%M", "%Y-%m-%d"}) {
        std::tm time{};
        const char* const end = strptime(text.c_str(), form, &time);
        if (!end || *end != '\0') continue;
        time.tm_isdst = -1;
        return int64_t{std::mktime(&time)} * 1000000000;
    }
    return {};
}

std::string DateFault(const std::string& text) {
    return ReadDate(text) ? "" : "not a date: " + text;
}

struct Arguments {
    ImportVerbOptions options;
    std::string date;
};

// Throws Failure for what cannot be meant.
void Complete(Arguments& arguments) {
    ImportVerbOptions& options = arguments.options;
    for (std::string& path : options.paths)
        path = AbsolutePath(path);
    if (!arguments.date.empty()) options.time = ReadDate(arguments.date);
    if (options.game.find('/') != std::string::npos || options.game[0] == '.')
        throw Failure(kExitUsage, options.game + ": not the name of a game's folder");
    if (options.follow && (options.paths.size() != 1 || !IsFolder(options.paths.front())))
        throw Failure(kExitUsage, "--follow takes one folder");
}

}  // namespace

void AddImportVerbs(CLI::App& app, Prepare& chosen) {
    const auto arguments = std::make_shared<Arguments>();
    ImportVerbOptions& options = arguments->options;
    CLI::App* const verb =
        app.add_subcommand("import", "Make files of other recorders captures of the gallery.");
    verb->add_option("PATHS", options.paths, "files and folders")->required()->type_name("")->expected(1, -1);
    verb->add_option("--app", options.game, "the game")->type_name("NAME");
    verb->add_option("--highlight", options.highlight, "the highlight that they show")->type_name("NAME");
    verb->add_option("--date", arguments->date, kDateHelp)->type_name("DATE")->check(DateFault);
    verb->add_flag("--move", options.move, "remove each source once its copy was verified");
    verb->add_flag("--dry-run", options.dryRun, "only list what would be imported");
    verb->add_flag("--follow", options.follow, "go on with each recording of one folder once it is finished");
    verb->add_flag("--json", options.json, kJsonHelp);
    verb->footer(kImportFooter);
    Choose(*verb, chosen, [arguments](const Preparation& preparation) -> Job {
        Complete(*arguments);
        Interrupt& interrupt = preparation.interrupt;
        return [arguments, &interrupt](Session& session, Output& output) {
            RunImport(session, output, interrupt, arguments->options);
        };
    });
}

}  // namespace host
