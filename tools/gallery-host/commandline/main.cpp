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

#include "base/FreedMemory.h"
#include "base/LibraryLoading.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Interrupt.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/commandline/CommandLine.h"
#include "gallery-host/debug/DebugModes.h"
#include "gallery-host/debug/Trace.h"
#include "gallery-host/session/Session.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFooter = R"(Examples:
  gallery-host list
  gallery-host list ~/Videos
  gallery-host list --json --exr "$HOME/Videos/ZORVEX/Ovirastream/Some Game"
  gallery-host call GetFolderListing '{"directory":"/home/me/Videos","excludeDirectoryType":"empty"}'
  echo '{"method":"GetFolderListing","payload":{"directory":"/home/me/Videos"}}' | gallery-host serve
  gallery-host show "Rustwind Rally/Photo finish.png"
  gallery-host cp *.mp4 /media/me/stick/
  gallery-host settings set --cap on --cap-percent 50
  gallery-host watch
  gallery-host page
  gallery-host demo
  gallery-host cp --help

Data goes to standard output, everything else to standard error. Exit status: 0 success, 1 the request failed,
2 usage, 3 the plug-in could not be loaded or started, 4 no answer in time, 130 interrupted. An interrupt stops
the plug-in in order, and ends watch with status 0; a second one leaves at once.
)";

struct Arguments {
    SessionOptions session;
    double timeout = 30;
    std::vector<std::string> debug;
    Prepare verb;
};

std::string DefaultPlugin() {
    return InProduct("Frameworks/plugins/Gallery/libGallery") + KXP::Platform::kLibrarySuffix;
}

void AddGlobalOptions(CLI::App& app, Arguments& arguments) {
    app.set_version_flag("--version", "gallery-host " GALLERY_VERSION);
    app.add_option("--plugin", arguments.session.plugin,
                   "the plug-in's library; by default the one beside this program")
        ->type_name("PATH");
    app.add_option("--timeout", arguments.timeout, "how long to wait for the plug-in")
        ->type_name("SECONDS")
        ->capture_default_str()
        ->check([](const std::string& text) {
            // CLI::Range would accept a text that is not a number.
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

// If a standard stream is closed, a descriptor that is opened later would take its number.
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

// Starts the plug-in, does the job, and stops the plug-in even if the job fails. Sets `abandoned` if the
// plug-in's threads still run.
ExitStatus WithPlugin(const SessionOptions& options, Interrupt& interrupt, bool& abandoned, const Job& job,
                      Output& output) {
    auto session = std::make_unique<Session>(options, interrupt);
    const ExitStatus status = Guarded([&] {
        session->Start();
        job(*session, output);
    });
    const ExitStatus stopped = session->Stop();
    abandoned = session->abandoned();
    // The plug-in's threads use it until the process ends.
    if (abandoned) static_cast<void>(session.release());
    return status != kExitSuccess ? status : stopped;
}

void FillIn(Arguments& arguments) {
    arguments.session.debug = ReadDebugModes(arguments.debug);
    if (arguments.session.debug.watcher) LogWatcherEvents();
    arguments.session.timeout = std::chrono::milliseconds(std::llround(arguments.timeout * 1000));
    if (arguments.session.plugin.empty()) arguments.session.plugin = DefaultPlugin();
    // dlopen would search the system's libraries for a name without a slash.
    arguments.session.plugin = fs::absolute(arguments.session.plugin).string();
}

// Returns the exit status; does not return if the plug-in had to be abandoned.
int Run(Arguments& arguments) {
    ExitStatus status = kExitSuccess;
    bool abandoned = false;
    const ExitStatus failed = Guarded([&] {
        FillIn(arguments);
        Interrupt interrupt;
        Output output(interrupt);
        const Job job = arguments.verb({interrupt, arguments.session, output});
        if (job) status = WithPlugin(arguments.session, interrupt, abandoned, job, output);
    });
    if (failed != kExitSuccess) status = failed;
    if (abandoned) std::_Exit(status);
    return status;
}

int Main(int argc, char** argv) {
    KXP::Platform::KeepHeapTogether();
    OpenStandardStreams();
    Arguments arguments;
    CLI::App app("Drives the gallery plug-in from a terminal or a program.", "gallery-host");
    app.footer(kFooter);
    app.fallthrough();
    app.require_subcommand(0, 1);
    AddGlobalOptions(app, arguments);
    AddHostVerbs(app, arguments.verb);
    AddCaptureVerbs(app, arguments.verb);
    AddImportVerbs(app, arguments.verb);
    AddVideoVerbs(app, arguments.verb);
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
    return Run(arguments);
}

}  // namespace
}  // namespace host

int main(int argc, char** argv) {
    return host::Main(argc, argv);
}
