// The verbs on the command line: each adds a subcommand with its options, and the one that the user names
// runs.
#pragma once

#include <functional>

#include "gallery-host/base/Interrupt.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace CLI {
class App;
}

namespace host {

struct Preparation {
    Interrupt& interrupt;
    SessionOptions& session;
    Output& output;
};

// What a verb does once the plug-in has started. May throw Failure.
using Job = std::function<void(Session&, Output&)>;
// What a verb does before the plug-in starts, such as reading its input, so that a mistake ends the program
// early. May throw Failure. A verb that needs no plug-in is done with it, and returns null.
using Prepare = std::function<Job(const Preparation&)>;

constexpr const char* kJsonHelp = "print JSON, for programs";

// Sets `chosen` to `prepare` if the command line names the subcommand.
void Choose(CLI::App& subcommand, Prepare& chosen, Prepare prepare);

// call, list, serve, replay, watch, page, doctor and demo.
void AddHostVerbs(CLI::App& app, Prepare& chosen);
// recent, stats, show, thumb, cp, mv, rm, restore, clean, drives and settings.
void AddCaptureVerbs(CLI::App& app, Prepare& chosen);
// import.
void AddImportVerbs(CLI::App& app, Prepare& chosen);
// trim, meme, engrave and montage.
void AddVideoVerbs(CLI::App& app, Prepare& chosen);

}  // namespace host
