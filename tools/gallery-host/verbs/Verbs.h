// The verbs that ask one thing: call and list.
#pragma once

#include <string>

#include "common/Json.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

struct CallOptions {
    std::string method;
    KXP::Document payload;
    bool raw = false;
};

struct ListOptions {
    std::string directory;  // absolute
    bool onlyOwn = false;
    std::string exclude = "none";
    bool exr = false;
    bool json = false;
};

// The payload that the words of the command line stand for: JSON text, "-" for standard input, "@file" for a
// file, and an empty object when `text` is empty. Throws Failure(kExitUsage).
KXP::Document ReadPayload(const std::string& text, Interrupt& interrupt);

// These throw Failure(kExitFailed) with the code and text of a result below zero.
void RunCall(Session& session, Output& output, const CallOptions& options);
void RunList(Session& session, Output& output, const ListOptions& options);

// Prints it for programs.
void WriteJson(Output& output, const KXP::Value& value);
// Prints what became of one thing, on a line: `line` with "ok", and with a reason if `error` is one.
void WriteOutcome(Output& output, KXP::Document line, const std::string& error);

// The response to a request; throws as these do.
KXP::Document AskForSuccess(Session& session, const std::string& method, const KXP::Value& payload);
// The same for the request that list makes.
KXP::Document AskListing(Session& session, const ListOptions& options);

}  // namespace host
