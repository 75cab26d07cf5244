// The command line of call, list, serve, watch, page and demo.
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "gallery-host/base/Paths.h"
#include "gallery-host/commandline/CommandLine.h"
#include "gallery-host/doctor/Doctor.h"
#include "gallery-host/page/PageVerb.h"
#include "gallery-host/verbs/Demo.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Replay.h"
#include "gallery-host/verbs/Serve.h"
#include "gallery-host/verbs/Verbs.h"
#include "gallery-host/verbs/Watch.h"

namespace host {
namespace {

constexpr const char* kListFooter =
    R"(Without DIR it lists the captures on record, game by game, newest first, and waits while the gallery is still
being scanned; with --json as
  {"games":[{"name":"Rustwind Rally","ugc":[{"path":"/home/me/Videos/...","fileType":"video"}]}]}
With DIR it lists folders first, then files, newest first; with --json as the payload of GetFolderListing.
)";

constexpr const char* kServeFooter =
    R"(Each line of standard input is an envelope; fields that it lacks are filled in:
  {"method":"GetFolderListing","payload":{"directory":"/home/me/Videos"}}
Each message of the plug-in, response or notification, is a line of standard output. A line that is refused is answered with
  {"error":{"line":3,"text":"what is wrong"},"reference_uniqueid":"the line's own, if it had one"}
The plug-in's log goes to standard error. All notifications are printed; an envelope of type 3073 with the name of a
notification as its method subscribes to it under its own uniqueid. These lines are commands for the plug-in; each is
printed when it is done:
  {"command":"stop"}     end montages, and keep all messages in both directions until the next start
  {"command":"start"}    deliver the messages that were kept, and go on
  {"command":"restart"}  end the plug-in and start it anew; requests without an answer by then get none
After the end of standard input the program waits for the remaining answers and ends.
Programs that the plug-in starts can send such lines, of 64 KiB at most, as datagrams to the socket that the
environment variable GALLERY_HOST_MESSAGES names; they receive no answers.
)";

constexpr const char* kReplayFooter = R"(Examples:
  gallery-host serve --record session.jsonl
  gallery-host replay session.jsonl
It sends what the recording sent, each message once the answers that came before it are there, and shows the first
answer that differs; the exit status is then 1. Free space may differ, and what --ignore names. In a recording the
user's home is "$HOME", so that it can be played in another one. With --redact names, texts and paths are words without
a meaning, so that a recording can be shown to others; it cannot be played.
)";

constexpr const char* kWatchFooter =
    R"(A line is the time, what happened, and what it happened to:
  12:03:07  saved      Rustwind Rally/Photo finish.png  image, highlight, 2.4 MB
  12:03:07  usage      1.2 GB of 512 GB (cap 50 %, on)
A notification of another form is shown as its name and its payload. With --json each line is
  {"notification":"GalleryNotifications","payload":{"galleryIsFull":true}}
Ctrl-C ends it with exit status 0, or with 130 if there were fewer notifications than --count.
)";

constexpr const char* kPageFooter =
    R"(It prints an address that opens the page once, within five minutes, and leads the user's browser to it. Only this
computer can reach the server, and of its users only who has the address. Ctrl-C ends it with exit status 0.
)";

constexpr const char* kDoctorFooter =
    R"(Each thing that it looks at is a line: OK, a note or WRONG, and what to do about it. It changes nothing without
--fix, which lets the next start scan the gallery when the record names files that are gone, and removes unfinished
copies. It needs no plug-in that works. The exit status is 1 when something is wrong. With --json it prints
  {"checks":[{"check":"room","state":"ok","text":"52 GB of 271 GB are free","advice":""}]}
)";

void AddCall(CLI::App& app, Prepare& chosen) {
    struct Arguments {
        CallOptions options;
        std::string payload;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* call = app.add_subcommand("call", "Make one request and print the payload of its response.");
    call->add_option("METHOD", arguments->options.method, "for example GetSettings")
        ->required()
        ->check([](const std::string& method) { return method.empty() ? "it is empty" : ""; });
    call->add_option("PAYLOAD", arguments->payload,
                     "a JSON object; \"-\" reads it from standard input, \"@file\" from a file");
    call->add_flag("--raw", arguments->options.raw, "print the whole response on one line");
    Choose(*call, chosen, [arguments](const Preparation& preparation) -> Job {
        arguments->options.payload = ReadPayload(arguments->payload, preparation.interrupt);
        return
            [arguments](Session& session, Output& output) { RunCall(session, output, arguments->options); };
    });
}

void AddList(CLI::App& app, Prepare& chosen) {
    const auto options = std::make_shared<ListOptions>();
    CLI::App* list = app.add_subcommand("list", "List the gallery's captures, or what is in a folder.");
    CLI::Option* folder = list->add_option("DIR", options->directory, "a folder, instead of the gallery");
    list->add_flag("--json", options->json, kJsonHelp);
    list->add_flag("--only-own", options->onlyOwn,
                   "only the product's own captures in DIR, as the gallery has them on record")
        ->needs(folder);
    list->add_option("--exclude", options->exclude, "folders in DIR to leave out")
        ->capture_default_str()
        ->needs(folder)
        ->check(CLI::IsMember({"none", "hidden", "empty", "hiddenOrEmpty", "hiddenAndEmpty"}));
    list->add_flag("--exr", options->exr, "list EXR files that have a thumbnail, too")->needs(folder);
    list->footer(kListFooter);
    Choose(*list, chosen, [options, folder](const Preparation&) -> Job {
        if (folder->count() == 0)
            return [options](Session& session, Output& output) {
                RunGalleryList(session, output, options->json);
            };
        options->directory = FolderPath(options->directory);
        return [options](Session& session, Output& output) { RunList(session, output, *options); };
    });
}

// The home that a session is played in may be one made for it.
std::shared_ptr<TemporaryHome> HomeOfSamples(const Preparation& preparation) {
    auto home = std::make_shared<TemporaryHome>(preparation.session.debug.keepTemp);
    home->FillWithSamples();
    return home;
}

constexpr const char* kDemoHelp = "over the gallery of \"demo\", in a temporary home";

void AddServe(CLI::App& app, Prepare& chosen) {
    struct Arguments {
        std::string record;
        bool redact = false;
        bool demo = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* serve =
        app.add_subcommand("serve", "Exchange lines of JSON on standard input and output, for programs.");
    CLI::Option* record =
        serve->add_option("--record", arguments->record, "write the session to a new file, for \"replay\"")
            ->type_name("FILE");
    serve->add_flag("--redact", arguments->redact, "record no names, texts and paths")->needs(record);
    serve->add_flag("--demo", arguments->demo, kDemoHelp);
    serve->footer(kServeFooter);
    Choose(*serve, chosen, [arguments](const Preparation& preparation) -> Job {
        preparation.session.showLog = true;
        const auto home = arguments->demo ? HomeOfSamples(preparation) : nullptr;
        const auto recorder = arguments->record.empty()
                                  ? nullptr
                                  : std::make_shared<Recorder>(arguments->record, arguments->redact);
        const auto messages = std::make_shared<MessageSocket>();
        return [home, recorder, messages](Session& session, Output& output) {
            session.Relay(*messages);
            RunServe(session, output, recorder.get());
        };
    });
}

void AddReplay(CLI::App& app, Prepare& chosen) {
    struct Arguments {
        std::string file;
        std::string record;
        std::vector<std::string> ignored;
        bool demo = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* replay = app.add_subcommand("replay", "Repeat a recorded session and compare the answers.");
    replay->add_option("FILE", arguments->file, "what \"serve --record\" has written")
        ->required()
        ->type_name("");
    replay->add_option("--ignore", arguments->ignored, "members whose values may differ")
        ->type_name("NAME...");
    replay->add_option("--record", arguments->record, "write what happens now to a new file")
        ->type_name("NEW");
    replay->add_flag("--demo", arguments->demo, kDemoHelp);
    replay->footer(kReplayFooter);
    Choose(*replay, chosen, [arguments](const Preparation& preparation) -> Job {
        // Before the paths in the recording are read: they lead into this home.
        const auto home = arguments->demo ? HomeOfSamples(preparation) : nullptr;
        const auto recording = std::make_shared<std::vector<RecordedMessage>>(ReadRecording(arguments->file));
        const auto recorder =
            arguments->record.empty() ? nullptr : std::make_shared<Recorder>(arguments->record, false);
        return [home, recording, recorder, arguments](Session& session, Output& output) {
            RunReplay(session, output, *recording, arguments->ignored, recorder.get());
        };
    });
}

void AddWatch(CLI::App& app, Prepare& chosen) {
    const auto options = std::make_shared<WatchOptions>();
    CLI::App* watch = app.add_subcommand("watch", "Print the gallery's notifications as they come.");
    watch->add_flag("--json", options->json, "print names and payloads, for programs");
    watch->add_option("--count", options->count, "end after this many notifications")
        ->type_name("N")
        ->check(CLI::Range(1, 1000000000).description(""));
    watch->footer(kWatchFooter);
    Choose(*watch, chosen, [options](const Preparation&) -> Job {
        return [options](Session& session, Output& output) { RunWatch(session, output, *options); };
    });
}

void AddPage(CLI::App& app, Prepare& chosen) {
    struct Arguments {
        bool noOpen = false;
        bool app = false;
        bool demo = false;
        bool keep = false;
        uint16_t port = 0;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* page = app.add_subcommand("page", "Show the gallery in a browser.");
    CLI::Option* noOpen = page->add_flag("--no-open", arguments->noOpen, "only print the address");
    CLI::Option* port =
        page->add_option("--port", arguments->port,
                         "this port and no other, 0 for any free one; by default the first free one of " +
                             std::to_string(page::kFirstPort) + " to " +
                             std::to_string(page::kFirstPort + page::kPorts - 1))
            ->type_name("N");
    page->add_flag("--app", arguments->app,
                   "open a window of its own in Chromium; the program ends when it is closed")
        ->excludes(noOpen);
    CLI::Option* demo = page->add_flag("--demo", arguments->demo,
                                       "show a gallery of pictures and videos made for this, in a temporary "
                                       "home that is removed at the end");
    page->add_flag("--keep", arguments->keep, "keep the temporary home and say where it is")->needs(demo);
    page->footer(kPageFooter);
    Choose(*page, chosen, [arguments, port](const Preparation& preparation) -> Job {
        page::PageOptions options;
        if (port->count() > 0) options.port = arguments->port;
        options.open = !arguments->noOpen;
        options.app = arguments->app;
        options.version = GALLERY_VERSION;
        if (!arguments->demo) return page::PreparePage(options);
        // The job owns it, so it is removed after the plug-in has ended.
        const auto home =
            std::make_shared<TemporaryHome>(arguments->keep || preparation.session.debug.keepTemp);
        const Job job = page::PreparePage(options);
        home->FillWithScenes();
        return [home, job](Session& session, Output& output) {
            CaptionScenes(session);
            job(session, output);
        };
    });
}

void AddDoctor(CLI::App& app, Prepare& chosen) {
    const auto options = std::make_shared<DoctorOptions>();
    CLI::App* doctor = app.add_subcommand("doctor", "Look for what keeps the gallery from working.");
    doctor->add_flag("--fix", options->fix, "mend what is safe to mend");
    doctor->add_flag("--json", options->json, kJsonHelp);
    doctor->footer(kDoctorFooter);
    Choose(*doctor, chosen, [options](const Preparation& preparation) -> Job {
        options->plugin = preparation.session.plugin;
        RunDoctor(preparation.output, *options);
        return nullptr;
    });
}

void AddDemo(CLI::App& app, Prepare& chosen) {
    const auto keep = std::make_shared<bool>(false);
    CLI::App* demo = app.add_subcommand(
        "demo", "Make a small gallery in a temporary home and list it. The home is removed at the end.");
    demo->add_flag("--keep", *keep, "keep the temporary home and say where it is");
    Choose(*demo, chosen, [keep](const Preparation& preparation) -> Job {
        // The job owns it, so it is removed after the plug-in has ended.
        const auto home = std::make_shared<TemporaryHome>(*keep || preparation.session.debug.keepTemp);
        return [home, gallery = home->FillWithSamples()](Session& session, Output& output) {
            RunDemo(session, output, gallery);
        };
    });
}

}  // namespace

void AddHostVerbs(CLI::App& app, Prepare& chosen) {
    AddCall(app, chosen);
    AddList(app, chosen);
    AddServe(app, chosen);
    AddReplay(app, chosen);
    AddWatch(app, chosen);
    AddPage(app, chosen);
    AddDoctor(app, chosen);
    AddDemo(app, chosen);
}

}  // namespace host
