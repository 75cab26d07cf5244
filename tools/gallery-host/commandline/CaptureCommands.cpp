// The command line of the verbs about captures, drives and settings.
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/commandline/CommandLine.h"
#include "gallery-host/verbs/Clean.h"
#include "gallery-host/verbs/DriveVerbs.h"
#include "gallery-host/verbs/FileVerbs.h"
#include "gallery-host/verbs/RecordVerbs.h"
#include "gallery-host/verbs/Restore.h"
#include "gallery-host/verbs/SettingsVerbs.h"
#include "gallery-host/verbs/Thumbnail.h"

namespace host {
namespace {

constexpr const char* kThumbFooter = R"(Examples:
  gallery-host thumb "Photo finish.mp4" -o finish.png
  gallery-host thumb --size 640x360 "Photo finish.mp4" -o - | display
OUT.png is replaced only by a complete thumbnail.
)";

constexpr const char* kTransferFooter = R"(Examples:
  gallery-host cp "Photo finish.png" /tmp/finish.png
  gallery-host mv *.mp4 "$HOME/Videos/ZORVEX/Ovirastream/Rustwind Rally/"
Only captures of the product are copied or moved, and no file is overwritten. If DEST is a folder or ends in "/",
files go into it under their own names; mv creates the folder. After a failure the other files still have their turn,
and the exit status is 1. With --json each file is a line
  {"file":"/home/me/a.png","destination":"/tmp/a.png","ok":true}
or has "ok":false and the reason as "error".
)";

constexpr const char* kRemoveFooter = R"(Examples:
  gallery-host rm --dry-run *.png
  gallery-host rm "Second lap.mp4"
Only captures on record are removed. They go to the trash of their volume, and "restore" brings them back. After a
failure the other files still have their turn, and the exit status is 1. With --json each file is a line
  {"file":"/home/me/a.png","ok":true}
or has "ok":false and the reason as "error".
)";

constexpr const char* kRestoreFooter = R"(Examples:
  gallery-host restore
  gallery-host restore "Second lap.mp4" "Rustwind Rally/Start line.png"
A NAME is that of the file, or its path, also from the gallery on; of several the one that was deleted last comes
back. Without NAME everything comes back that the last command moved to the trash or, if something was deleted
otherwise since then, that one file. Captions come back, too. No file is overwritten. With --json each file is a line
  {"file":"/home/me/Videos/ZORVEX/Ovirastream/Race/a.png","ok":true}
or has "ok":false and the reason as "error".
)";

constexpr const char* kCleanFooter = R"(Examples:
  gallery-host clean
  gallery-host clean --to 20GB --yes
  gallery-host clean --older-than 365 --game "Rustwind Rally"
It lists what would go, the oldest captures first; with --yes they go to the trash, and "restore --last" brings them
back. Highlights and captures with a caption stay unless --all is named, and go last then. Without --to, --older-than
and --game it gets the gallery under its cap; --older-than and --game choose captures, and --to says when it is enough.
The exit status is 1 if the gallery stays too large.
)";

constexpr const char* kSettingsFooter = R"(Examples:
  gallery-host settings
  gallery-host settings set --path /media/me/disk/Gallery
  gallery-host settings set --cap on --cap-percent 50
)";

constexpr const char* kSetFooter =
    R"(After a change of the gallery folder it waits for the scan; captures stay where they are.
)";

void AddRecent(CLI::App& app, Prepare& chosen) {
    struct Arguments {
        unsigned count = 10;
        bool json = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* recent = app.add_subcommand("recent", "List the latest captures of all games.");
    recent->add_option("--count", arguments->count, "how many")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000000000).description(""));
    recent->add_flag("--json", arguments->json, kJsonHelp);
    Choose(*recent, chosen, [arguments](const Preparation&) -> Job {
        return [arguments](Session& session, Output& output) {
            RunRecent(session, output, arguments->count, arguments->json);
        };
    });
}

struct Subject {
    std::string name;
    bool json = false;
};

void AddStats(CLI::App& app, Prepare& chosen) {
    const auto subject = std::make_shared<Subject>();
    CLI::App* stats = app.add_subcommand("stats", "Count the captures of a game.");
    stats->add_option("GAME", subject->name, "the name of its folder, as in \"list\"")
        ->required()
        ->type_name("")
        ->check([](const std::string& game) { return game.empty() ? "it is empty" : ""; });
    stats->add_flag("--json", subject->json, kJsonHelp);
    Choose(*stats, chosen, [subject](const Preparation&) -> Job {
        return [subject](Session& session, Output& output) {
            RunStats(session, output, subject->name, subject->json);
        };
    });
}

void AddShow(CLI::App& app, Prepare& chosen) {
    const auto subject = std::make_shared<Subject>();
    CLI::App* show = app.add_subcommand("show", "Show everything that is on record about a capture.");
    show->add_option("FILE", subject->name, "a capture on record")->required()->type_name("");
    show->add_flag("--json", subject->json, kJsonHelp);
    Choose(*show, chosen, [subject](const Preparation&) -> Job {
        return [subject, path = AbsolutePath(subject->name)](Session& session, Output& output) {
            RunShow(session, output, subject->name, path, subject->json);
        };
    });
}

void CheckThumbOutput(ThumbOptions& options) {
    if (options.out != "-") {
        options.out = AbsolutePath(options.out);
        return;
    }
    if (options.json) throw Failure(kExitUsage, "--json and the image cannot both go to standard output");
    if (isatty(STDOUT_FILENO) == 1) throw Failure(kExitUsage, "an image cannot go to a terminal");
}

void AddThumb(CLI::App& app, Prepare& chosen) {
    struct Arguments {
        ThumbOptions options;
        std::string size = "320x180";
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* thumb = app.add_subcommand("thumb", "Write a thumbnail of an image or video.");
    thumb->add_option("FILE", arguments->options.name, "the image or video")->required()->type_name("");
    thumb->add_option("-o,--output", arguments->options.out, "the file to write; \"-\" is standard output")
        ->required()
        ->type_name("OUT.png");
    thumb->add_option("--size", arguments->size, "its size in pixels")
        ->type_name("WxH")
        ->capture_default_str()
        ->check([](const std::string& text) {
            return ReadThumbSize(text) ? "" : "not of the form 320x180: " + text;
        });
    thumb->add_flag("--json", arguments->options.json, kJsonHelp);
    thumb->footer(kThumbFooter);
    Choose(*thumb, chosen, [arguments](const Preparation&) -> Job {
        ThumbOptions& options = arguments->options;
        const ThumbSize size = *ReadThumbSize(arguments->size);
        options.width = size.width;
        options.height = size.height;
        options.path = AbsolutePath(options.name);
        CheckThumbOutput(options);
        return
            [arguments](Session& session, Output& output) { RunThumb(session, output, arguments->options); };
    });
}

struct FileArguments {
    std::vector<std::string> paths;
    FileOptions options;
};

using Plan = std::vector<FileJob> (*)(const std::vector<std::string>&);
using RunFiles = void (*)(Session&, Output&, const std::vector<FileJob>&, const FileOptions&);

void ChooseFiles(CLI::App& verb, Prepare& chosen, const std::shared_ptr<FileArguments>& arguments, Plan plan,
                 RunFiles run) {
    verb.add_flag("--json", arguments->options.json, kJsonHelp);
    Choose(verb, chosen, [arguments, plan, run](const Preparation&) -> Job {
        return [arguments, run, jobs = plan(arguments->paths)](Session& session, Output& output) {
            run(session, output, jobs, arguments->options);
        };
    });
}

void AddTransfer(CLI::App& app, Prepare& chosen, const char* name, const char* about, Plan plan,
                 RunFiles run) {
    const auto arguments = std::make_shared<FileArguments>();
    CLI::App* verb = app.add_subcommand(name, about);
    verb->add_option("PATHS", arguments->paths, "the captures, then their destination: FILE... DEST")
        ->required()
        ->type_name("")
        ->expected(2, -1);
    verb->footer(kTransferFooter);
    ChooseFiles(*verb, chosen, arguments, plan, run);
}

void AddRemove(CLI::App& app, Prepare& chosen) {
    const auto arguments = std::make_shared<FileArguments>();
    CLI::App* verb = app.add_subcommand("rm", "Move captures to the trash.");
    verb->add_option("FILES", arguments->paths, "captures on record")
        ->required()
        ->type_name("")
        ->expected(1, -1);
    verb->add_flag("--dry-run", arguments->options.dryRun, "only list what would be removed");
    verb->add_flag("--permanently", arguments->options.permanently,
                   "delete them from the disk instead; they cannot be restored");
    verb->footer(kRemoveFooter);
    ChooseFiles(*verb, chosen, arguments, PlanRemovals, RunRemove);
}

void AddRestore(CLI::App& app, Prepare& chosen) {
    const auto options = std::make_shared<RestoreOptions>();
    CLI::App* restore = app.add_subcommand("restore", "Bring captures back from the trash.");
    CLI::Option* names =
        restore->add_option("NAMES", options->names, "which; by default those deleted last")->type_name("");
    restore->add_flag("--last", "those deleted last, as without NAME")->excludes(names);
    restore->add_flag("--list", options->list, "only list what can be brought back, the last first")
        ->excludes(names);
    restore->add_flag("--json", options->json, kJsonHelp);
    restore->footer(kRestoreFooter);
    Choose(*restore, chosen, [options](const Preparation&) -> Job {
        return [options](Session& session, Output& output) { RunRestore(session, output, *options); };
    });
}

void AddClean(CLI::App& app, Prepare& chosen) {
    const auto options = std::make_shared<CleanOptions>();
    CLI::App* clean = app.add_subcommand("clean", "Make the gallery smaller.");
    const std::map<std::string, double> kilobytes = {{"kb", 1}, {"mb", 1e3}, {"gb", 1e6}, {"tb", 1e9}};
    constexpr auto kUnits = static_cast<CLI::AsNumberWithUnit::Options>(
        CLI::AsNumberWithUnit::CASE_INSENSITIVE | CLI::AsNumberWithUnit::UNIT_REQUIRED);
    clean->add_option("--to", options->toKB, "what the gallery may take in the end, such as 20GB")
        ->type_name("SIZE")
        ->check([](const std::string& size) { return size[0] == '-' ? "it is negative" : ""; })
        ->transform(CLI::AsNumberWithUnit(kilobytes, kUnits).description(""));
    clean->add_option("--older-than", options->olderThanDays, "only captures that are older")
        ->type_name("DAYS")
        ->check(CLI::Range(0, 100000).description(""));
    clean->add_option("--game", options->game, "only captures of this game, as in \"list\"")
        ->type_name("NAME")
        ->check([](const std::string& game) {
            return game.empty() || game.find('/') != std::string::npos ? "it is no name of a folder" : "";
        });
    clean->add_flag("--all", options->all, "highlights and captures with a caption, too, after the others");
    clean->add_flag("--yes", options->yes, "do it");
    clean->add_flag("--json", options->json, kJsonHelp);
    clean->footer(kCleanFooter);
    Choose(*clean, chosen, [options](const Preparation&) -> Job {
        return [options](Session& session, Output& output) { RunClean(session, output, *options); };
    });
}

void AddDrives(CLI::App& app, Prepare& chosen) {
    struct Arguments {
        bool all = false;
        bool json = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* drives = app.add_subcommand("drives", "List the drives and their free space.");
    drives->add_flag("--all", arguments->all, "list drives of the system too, as JSON always does");
    drives->add_flag("--json", arguments->json, kJsonHelp);
    Choose(*drives, chosen, [arguments](const Preparation&) -> Job {
        return [arguments](Session& session, Output& output) {
            RunDrives(session, output, arguments->all, arguments->json);
        };
    });
}

struct SettingsArguments {
    SettingsChange change;
    std::string cap;
    int percent = 0;
    bool json = false;
};

void AddSettingsSet(CLI::App& settings, Prepare& chosen,
                    const std::shared_ptr<SettingsArguments>& arguments) {
    CLI::App* set = settings.add_subcommand("set", "Change settings.");
    set->add_option("--path", arguments->change.path, "the gallery's folder; created if it does not exist")
        ->type_name("DIR");
    set->add_option("--temp", arguments->change.temporary, "the folder for temporary files")
        ->type_name("DIR");
    CLI::Option* cap = set->add_option("--cap", arguments->cap, "whether the gallery's size is limited")
                           ->type_name("on|off")
                           ->check(CLI::IsMember({"on", "off"}).description(""));
    CLI::Option* percent =
        set->add_option("--cap-percent", arguments->percent, "how much of its disk the gallery may take")
            ->type_name("1-100")
            ->check(CLI::Range(1, 100).description(""));
    set->require_option(1, 0);
    set->footer(kSetFooter);
    Choose(*set, chosen, [arguments, cap, percent](const Preparation&) -> Job {
        SettingsChange& change = arguments->change;
        if (!change.path.empty()) change.path = AbsolutePath(change.path);
        if (!change.temporary.empty()) change.temporary = FolderPath(change.temporary);
        if (cap->count() > 0) change.cap = arguments->cap == "on";
        if (percent->count() > 0) change.capPercent = arguments->percent;
        return [arguments](Session& session, Output& output) {
            RunSettingsSet(session, output, arguments->change, arguments->json);
        };
    });
}

void AddSettings(CLI::App& app, Prepare& chosen) {
    const auto arguments = std::make_shared<SettingsArguments>();
    CLI::App* settings = app.add_subcommand("settings", "Show or change the gallery's settings.");
    settings->add_flag("--json", arguments->json, kJsonHelp);
    settings->require_subcommand(0, 1);
    settings->footer(kSettingsFooter);
    const Prepare get = [arguments](const Preparation&) -> Job {
        return [arguments](Session& session, Output& output) {
            RunSettingsGet(session, output, arguments->json);
        };
    };
    Choose(*settings, chosen, get);
    Choose(*settings->add_subcommand("get", "Show them, as without a word."), chosen, get);
    AddSettingsSet(*settings, chosen, arguments);
}

}  // namespace

void Choose(CLI::App& subcommand, Prepare& chosen, Prepare prepare) {
    subcommand.callback([&subcommand, &chosen, prepare = std::move(prepare)] {
        // That of a subcommand comes first, and is what was meant.
        if (subcommand.get_subcommands().empty()) chosen = prepare;
    });
}

void AddCaptureVerbs(CLI::App& app, Prepare& chosen) {
    AddRecent(app, chosen);
    AddStats(app, chosen);
    AddShow(app, chosen);
    AddThumb(app, chosen);
    AddTransfer(app, chosen, "cp", "Copy captures.", PlanCopies, RunCopy);
    AddTransfer(app, chosen, "mv", "Move captures.", PlanMoves, RunMove);
    AddRemove(app, chosen);
    AddRestore(app, chosen);
    AddClean(app, chosen);
    AddDrives(app, chosen);
    AddSettings(app, chosen);
}

}  // namespace host
