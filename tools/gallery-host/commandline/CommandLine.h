// How verbs come onto the command line: each adds a subcommand with its options, and the one that the user
// takes becomes the one to run.
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
};

// What a verb does once the plug-in has started. May throw Failure.
using Job = std::function<void(Session&, Output&)>;
// What it does ahead of that, such as reading its input, so that a mistake does not start the plug-in. May
// throw Failure.
using Prepare = std::function<Job(const Preparation&)>;

constexpr const char* kJsonHelp = "print JSON, for programs";

// Makes `prepare` the chosen one when the command line names the subcommand.
void Choose(CLI::App& subcommand, Prepare& chosen, Prepare prepare);

// call, list, serve, watch and demo.
void AddHostVerbs(CLI::App& app, Prepare& chosen);
// recent, stats, show, thumb, cp, mv, rm, drives and settings.
void AddCaptureVerbs(CLI::App& app, Prepare& chosen);
// trim, meme, engrave and montage.
void AddVideoVerbs(CLI::App& app, Prepare& chosen);

}  // namespace host
