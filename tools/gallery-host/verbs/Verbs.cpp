#include "gallery-host/verbs/Verbs.h"

#include <unistd.h>

#include "gallery-host/base/Input.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/ListTable.h"

namespace host {
namespace {

void ThrowIfFailed(const KXP::Document& answer) {
    if (ResultCode(answer) < 0) throw Failure(kExitFailed, ResultText(answer));
}

}  // namespace

KXP::Document ReadPayload(const std::string& text, Interrupt& interrupt) {
    std::string name = "PAYLOAD";
    std::string json = text;
    if (text == "-") {
        name = kStandardInput;
        json = ReadAll(STDIN_FILENO, name, interrupt);
    } else if (!text.empty() && text[0] == '@') {
        name = text.substr(1);
        json = ReadFile(name, interrupt);
    } else if (text.empty()) {
        json = "{}";
    }
    KXP::Document payload;
    std::string error;
    if (!ParseObject(json, payload, error)) throw Failure(kExitUsage, name + " is " + error);
    return payload;
}

void RunCall(Session& session, Output& output, const CallOptions& options) {
    const KXP::Document answer = session.Ask(options.method, options.payload);
    const std::string json = options.raw ? ToText(answer) : ToPrettyText(Payload(answer));
    output.Write(PrintableJson(json) + "\n");
    ThrowIfFailed(answer);
}

void WriteJson(Output& output, const KXP::Value& value) {
    output.Write(PrintableJson(ToPrettyText(value)) + "\n");
}

void WriteOutcome(Output& output, KXP::Document line, const std::string& error) {
    line.AddMember("ok", error.empty(), line.GetAllocator());
    if (!error.empty()) AddText(line, "error", error);
    output.Write(PrintableJson(ToText(line)) + "\n");
}

KXP::Document AskForSuccess(Session& session, const std::string& method, const KXP::Value& payload) {
    KXP::Document answer = session.Ask(method, payload);
    ThrowIfFailed(answer);
    return answer;
}

KXP::Document AskListing(Session& session, const ListOptions& options) {
    KXP::Document request(rapidjson::kObjectType);
    KXP::Allocator& allocator = request.GetAllocator();
    request.AddMember("directory", KXP::Value(options.directory, allocator), allocator);
    request.AddMember("shouldGetOnlyZv", options.onlyOwn, allocator);
    request.AddMember("excludeDirectoryType", KXP::Value(options.exclude, allocator), allocator);
    request.AddMember("shouldShowEXR", options.exr, allocator);
    return AskForSuccess(session, "GetFolderListing", request);
}

void RunList(Session& session, Output& output, const ListOptions& options) {
    const KXP::Document answer = AskListing(session, options);
    const KXP::Value& listing = Payload(answer);
    if (options.json) {
        WriteJson(output, listing);
    } else {
        output.Write(ListTable(listing, WantsColour()));
        Say(ListSummary(listing));
    }
}

}  // namespace host
