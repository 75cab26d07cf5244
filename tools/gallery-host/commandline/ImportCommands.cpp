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
PNG, JPEG and MP4 become captures: the pictures and frames stay as they are, and the name of the game is added. Nothing
is overwritten, and what was imported once is passed over, whatever its name is by then.
The game is --app; else the name of the file's folder, unless that is one such as Videos, Pictures or Screenshots; else
the file's name up to its date, without words such as Screenshot; else Other.
In a folder, files that are neither pictures nor videos by their ending, hidden ones and links are passed over.
Without --move the sources stay; with it each goes once its copy was read again and has the same picture.
Ctrl-C leaves whole files alone, and the next run goes on with the rest. After a failure the other files still have
their turn, and the exit status is 1.
With --json each file is a line
  {"file":"/home/me/a.png","destination":"/home/me/Videos/ZORVEX/Ovirastream/Tide/a.png","ok":true}
or has "known":true, or "ok":false and the reason as "error".
)";

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

void CheckGame(const std::string& name) {
    if (name.find('/') != std::string::npos || name[0] == '.')
        throw Failure(kExitUsage, name + ": not the name of a game's folder");
}

}  // namespace

void AddImportVerbs(CLI::App& app, Prepare& chosen) {
    struct Arguments {
        ImportVerbOptions options;
        std::string date;
    };
    const auto arguments = std::make_shared<Arguments>();
    ImportVerbOptions& options = arguments->options;
    CLI::App* import = app.add_subcommand("import", "Make files of other recorders captures of the gallery.");
    import->add_option("PATHS", options.paths, "files and folders")
        ->required()
        ->type_name("")
        ->expected(1, -1);
    import->add_option("--app", options.game, "the game")->type_name("NAME");
    import->add_option("--highlight", options.highlight, "the highlight that they show")->type_name("NAME");
    import
        ->add_option("--date", arguments->date,
                     "their date instead of the files' own, such as 2026-11-22 or \"2026-11-22 10:30\"")
        ->type_name("DATE")
        ->check([](const std::string& text) { return ReadDate(text) ? "" : "not a date: " + text;
});
import->add_flag("--move", options.move, "remove each source once its copy was verified");
import->add_flag("--dry-run", options.dryRun, "only list what would be imported");
import->add_flag("--json", options.json, kJsonHelp);
import->footer(kImportFooter);
Choose(*import, chosen, [arguments](const Preparation& preparation) -> Job {
    ImportVerbOptions& chosenOptions = arguments->options;
    for (std::string& path : chosenOptions.paths)
        path = AbsolutePath(path);
    if (!arguments->date.empty()) chosenOptions.time = ReadDate(arguments->date);
    CheckGame(chosenOptions.game);
    Interrupt& interrupt = preparation.interrupt;
    return [arguments, &interrupt](Session& session, Output& output) {
        RunImport(session, output, interrupt, arguments->options);
    };
});
}  // namespace host

}  // namespace host
