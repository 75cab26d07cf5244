// The command line of gallery-host.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <unistd.h>

#include "gallery-host/DebugModes.h"
#include "gallery-host/Demo.h"
#include "gallery-host/Failure.h"
#include "gallery-host/GalleryList.h"
#include "gallery-host/Interrupt.h"
#include "gallery-host/Output.h"
#include "gallery-host/Serve.h"
#include "gallery-host/Session.h"
#include "gallery-host/Verbs.h"
#include "gallery-host/Watch.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFooter = R"(Examples:
  gallery-host list
  gallery-host list ~/Videos
  gallery-host list --json --exr "$HOME/Videos/ZORVEX/Ovirastream/Some Game"
  gallery-host call GetFolderListing '{"directory":"/home/me/Videos","excludeDirectoryType":"empty"}'
  echo '{"method":"GetFolderListing","payload":{"directory":"/home/me/Videos"}}' | gallery-host serve
  gallery-host watch
  gallery-host watch --json --count 1
  gallery-host demo

Data goes to standard output, everything else to standard error. Exit status: 0 success, 1 the request failed,
2 usage, 3 the plug-in could not be loaded or started, 4 no answer in time, 130 interrupted. An interrupt stops
the plug-in in order, and is the ordinary end of watch, which then gives 0; a second one leaves at once.
)";

constexpr const char* kListFooter =
    R"(Without DIR it lists what the gallery has on record, game by game, newest first, and waits while the gallery
is still being looked through; with --json as
  {"games":[{"name":"Rustwind Rally","ugc":[{"path":"/home/me/Videos/...","fileType":"video"}]}]}
With DIR it lists folders first, then files, newest first; with --json as the payload of GetFolderListing.
)";

constexpr const char* kServeFooter =
    R"(Each line of standard input is an envelope, or as much of one as there is to tell:
  {"method":"GetFolderListing","payload":{"directory":"/home/me/Videos"}}
Each message of the plug-in, response or notification, is a line of standard output. A line that is refused gives
  {"error":{"line":3,"text":"what is wrong"},"reference_uniqueid":"the line's own, if it had one"}
The plug-in's log goes to standard error. Notifications come without asking; an envelope of type 3073 with a
notification's name as its method gets them under its own uniqueid. The end of standard input ends it, once all
answers are there.
)";

constexpr const char* kWatchFooter =
    R"(A line is the time, what happened, and what it happened to:
  12:03:07  saved      Rustwind Rally/Photo finish.png  image, highlight, 2.4 MB
  12:03:07  usage      1.2 GB of 512 GB (cap 50 %, on)
A notification of another form is shown as its name and its payload. With --json each line is
  {"notification":"GalleryNotifications","payload":{"galleryIsFull":true}}
Ctrl-C ends it with exit status 0; with --count, 130 tells that there were fewer than that.
)";

struct Arguments {
    SessionOptions session;
    double timeout = 30;
    std::vector<std::string> debug;
    CallOptions call;
    std::string payload;
    ListOptions list;
    WatchOptions watch;
    bool keep = false;
};

std::string DefaultPlugin() {
    std::error_code error;
    const fs::path executable = fs::read_symlink("/proc/self/exe", error);
    return (executable.parent_path().parent_path() / "Frameworks/plugins/Gallery/libGallery.so").string();
}

void AddGlobalOptions(CLI::App& app, Arguments& arguments) {
    app.set_version_flag("--version", "gallery-host " GALLERY_VERSION);
    app.add_option("--plugin", arguments.session.plugin,
                   "the plug-in's library; by default the one that came with this program")
        ->type_name("PATH");
    app.add_option("--timeout", arguments.timeout, "how long to wait for the plug-in")
        ->type_name("SECONDS")
        ->capture_default_str()
        ->check([](const std::string& text) {
            // Not by a range of the library, which takes what is no number for one in it.
            double seconds = 0;
            const bool number = CLI::detail::lexical_cast(text, seconds);
            return number && seconds >= 0.001 && seconds <= 86400 ? ""
                                                                  : "not between 0.001 and 86400: " + text;
        });
    app.add_flag("-v,--verbose", arguments.session.showLog, "show the plug-in's log lines");
    app.add_option("-d", arguments.debug, "debugging mode; \"-d list\" names them")
        ->type_name("MODE")
        ->allow_extra_args(false)
        ->check(CLI::IsMember(DebugModeNames()));
}

void AddVerbs(CLI::App& app, Arguments& arguments) {
    CLI::App* call = app.add_subcommand("call", "Make one request and print the payload of its response.");
    call->add_option("METHOD", arguments.call.method, "for example GetSettings")
        ->required()
        ->check([](const std::string& method) { return method.empty() ? "it is empty" : ""; });
    call->add_option("PAYLOAD", arguments.payload,
                     "a JSON object; \"-\" reads it from standard input, \"@file\" from a file");
    call->add_flag("--raw", arguments.call.raw, "print the whole response on one line");

    CLI::App* list = app.add_subcommand("list", "List the gallery's captures, or what is in a folder.");
    CLI::Option* folder =
        list->add_option("DIR", arguments.list.directory, "a folder, instead of the gallery");
    list->add_flag("--json", arguments.list.json, "print JSON, for programs");
    list->add_flag("--only-own", arguments.list.onlyOwn,
                   "only the product's own captures in DIR, as the gallery has them on record")
        ->needs(folder);
    list->add_option("--exclude", arguments.list.exclude, "folders in DIR to leave out")
        ->capture_default_str()
        ->needs(folder)
        ->check(CLI::IsMember({"none", "hidden", "empty", "hiddenOrEmpty", "hiddenAndEmpty"}));
    list->add_flag("--exr", arguments.list.exr, "list EXR files that have a thumbnail, too")->needs(folder);
    list->footer(kListFooter);

    app.add_subcommand("serve", "Talk JSON lines on standard input and output, for programs.")
        ->footer(kServeFooter);

    CLI::App* watch = app.add_subcommand("watch", "Print the gallery's notifications as they come.");
    watch->add_flag("--json", arguments.watch.json, "print names and payloads, for programs");
    watch->add_option("--count", arguments.watch.count, "end after so many notifications")
        ->type_name("N")
        ->check(CLI::Range(1, 1000000000).description(""));
    watch->footer(kWatchFooter);

    CLI::App* demo = app.add_subcommand(
        "demo", "Make a small gallery in a temporary home and list it. The home is removed at the end.");
    demo->add_flag("--keep", arguments.keep, "keep the temporary home and say where it is");
}

// Closed standard streams would give their numbers to descriptors that are opened later.
void OpenStandardStreams() {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd)
        if (fcntl(fd, F_GETFD) < 0 && open("/dev/null", O_RDONLY) < 0) std::_Exit(kExitFailed);
}

ExitStatus Guarded(const std::function<void()>& job) {
    try {
        job();
        return kExitSuccess;
    } catch (const Failure& failure) {
        Say(failure.what());
        return failure.status();
    } catch (const std::exception& error) {
        Say(error.what());
        return kExitFailed;
    }
}

// Starts the plug-in, does the job and stops the plug-in, whatever came of the job. Sets `abandoned` when the
// plug-in's threads still run.
ExitStatus WithPlugin(const SessionOptions& options, Interrupt& interrupt, bool& abandoned,
                      const std::function<void(Session&)>& job) {
    auto session = std::make_unique<Session>(options, interrupt);
    const ExitStatus status = Guarded([&] {
        session->Start();
        job(*session);
    });
    const ExitStatus stopped = session->Stop();
    abandoned = session->abandoned();
    // Its threads still use it, until the process is gone.
    if (abandoned) static_cast<void>(session.release());
    return status != kExitSuccess ? status : stopped;
}

ExitStatus RunVerb(const CLI::App& app, Arguments& arguments, Interrupt& interrupt, bool& abandoned) {
    Output output(interrupt);
    const auto run = [&](const std::function<void(Session&)>& job) {
        return WithPlugin(arguments.session, interrupt, abandoned, job);
    };
    if (app.got_subcommand("call")) {
        arguments.call.payload = ReadPayload(arguments.payload, interrupt);
        return run([&](Session& session) { RunCall(session, output, arguments.call); });
    }
    if (app.got_subcommand("list")) {
        if (app.get_subcommand("list")->count("DIR") == 0)
            return run([&](Session& session) { RunGalleryList(session, output, arguments.list.json); });
        arguments.list.directory = FolderPath(arguments.list.directory);
        return run([&](Session& session) { RunList(session, output, arguments.list); });
    }
    if (app.got_subcommand("serve")) {
        arguments.session.showLog = true;
        return run([&](Session& session) { Server(session, output).Run(); });
    }
    if (app.got_subcommand("watch"))
        return run([&](Session& session) { RunWatch(session, output, arguments.watch); });
    const TemporaryHome home(arguments.keep);
    const std::string gallery = home.FillGallery();
    return run([&](Session& session) { RunDemo(session, output, gallery); });
}

void FillIn(Arguments& arguments) {
    const DebugModes modes = ReadDebugModes(arguments.debug);
    arguments.session.trace = modes.trace;
    arguments.keep = arguments.keep || modes.keepTemp;
    arguments.session.timeout = std::chrono::milliseconds(std::llround(arguments.timeout * 1000));
    if (arguments.session.plugin.empty()) arguments.session.plugin = DefaultPlugin();
    // A name without a slash would be looked for among the system's libraries.
    arguments.session.plugin = fs::absolute(arguments.session.plugin).string();
}

// The exit status; does not come back when the plug-in had to be abandoned.
int Run(const CLI::App& app, Arguments& arguments) {
    ExitStatus status = kExitSuccess;
    bool abandoned = false;
    const ExitStatus failed = Guarded([&] {
        FillIn(arguments);
        Interrupt interrupt;
        status = RunVerb(app, arguments, interrupt, abandoned);
    });
    if (failed != kExitSuccess) status = failed;
    if (abandoned) std::_Exit(status);
    return status;
}

int Main(int argc, char** argv) {
    OpenStandardStreams();
    Arguments arguments;
    CLI::App app("Drives the gallery plug-in from a terminal or a program.", "gallery-host");
    app.footer(kFooter);
    app.fallthrough();
    app.require_subcommand(0, 1);
    AddGlobalOptions(app, arguments);
    AddVerbs(app, arguments);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kExitSuccess : kExitUsage;
    }
    for (const std::string& mode : arguments.debug)
        if (mode == "list") {
            std::fputs(DebugModeHelp().c_str(), stdout);
            return kExitSuccess;
        }
    if (app.get_subcommands().empty()) {
        std::fputs(app.help().c_str(), stderr);
        return kExitUsage;
    }
    return Run(app, arguments);
}

}  // namespace
}  // namespace host

int main(int argc, char** argv) {
    return host::Main(argc, argv);
}
