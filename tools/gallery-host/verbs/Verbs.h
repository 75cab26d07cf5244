// The verbs call and list, and requests that verbs share.
#pragma once

#include <string>

#include "common/json/Json.h"
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

// Reads the payload that `text` on the command line names: JSON, "-" for standard input, "@file" for a file;
// an empty object if `text` is empty. Throws Failure(kExitUsage).
KXP::Document ReadPayload(const std::string& text, Interrupt& interrupt);

// These throw Failure(kExitFailed) with the code and text of a result below zero.
void RunCall(Session& session, Output& output, const CallOptions& options);
void RunList(Session& session, Output& output, const ListOptions& options);

// Prints a value for programs.
void WriteJson(Output& output, const KXP::Value& value);
// Prints `line` with the member "ok", and with "error" unless `error` is empty.
void WriteOutcome(Output& output, KXP::Document line, const std::string& error);

// Sends a request and returns its response; throws like these.
KXP::Document AskForSuccess(Session& session, const std::string& method, const KXP::Value& payload);
// The same for the request of list.
KXP::Document AskListing(Session& session, const ListOptions& options);

}  // namespace host
