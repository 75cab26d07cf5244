#include "gallery-host/verbs/Serve.h"

#include <unistd.h>

#include "gallery-host/base/Input.h"
#include "gallery-host/message/Envelope.h"

namespace host {
namespace {

bool IsCommand(const KXP::Document& line) {
    return !Text(line, "command").empty() && !line.HasMember("method");
}

}  // namespace

Server::Server(Session& session, Sink sink, Recorder* recorder)
    : session_(session),
      sink_(std::move(sink)),
      recorder_(recorder),
      lines_(kMaxInputBytes, [this](const LineSplitter::Line& line) { OnLine(line); }) {}

Session::Listening Server::Begin() {
    Session::Listening listening =
        session_.Listen([this](KXP::Document& message, auto) { OnMessage(message); });
    subscriptions_.Make(session_);
    return listening;
}

void Server::Run() {
    const Session::Listening listening = Begin();
    ReadLines();
    AwaitAnswers();
    session_.FinishRelay(std::chrono::steady_clock::now() + session_.options().timeout);
}

void Server::ReadLines() {
    std::string bytes;
    while (open_) {
        if (session_.Pump(Deadline::max(), STDIN_FILENO) != PluginLoader::Wake::kDescriptor) continue;
        if (!ReadSome(STDIN_FILENO, kStandardInput, bytes)) {
            lines_.Finish();
            return;
        }
        lines_.Feed(bytes);
    }
}

void Server::AwaitAnswers() {
    const Deadline deadline = std::chrono::steady_clock::now() + session_.options().timeout;
    while (open_ && !outstanding_.empty())
        if (session_.Pump(deadline) == PluginLoader::Wake::kDeadline)
            throw Failure(kExitNoAnswer, "no answer to " + std::to_string(outstanding_.size()) +
                                             " request(s) within " + Seconds(session_.options().timeout));
}

void Server::OnLine(const LineSplitter::Line& line) {
    if (!open_) return;
    if (line.tooLong) {
        Refuse(line.number, "longer than " + std::to_string(kMaxInputBytes) + " bytes", {});
        return;
    }
    if (line.text.find_first_not_of(" \t\r") == std::string::npos) return;
    KXP::Document envelope;
    std::string error;
    if (!ParseObject(line.text, envelope, error)) {
        Refuse(line.number, error, {});
        return;
    }
    const std::string ownId = Text(envelope, "uniqueid");
    if (!IsCommand(envelope)) Complete(envelope);
    Take(envelope, line.number, ownId);
}

void Server::Take(const KXP::Document& line, size_t lineNumber) {
    Take(line, lineNumber, Text(line, "uniqueid"));
}

void Server::Take(const KXP::Document& line, size_t lineNumber, const std::string& ownId) {
    if (recorder_) recorder_->In(line);
    if (IsCommand(line)) {
        TakeCommand(line, lineNumber);
        return;
    }
    if (TakeSubscription(line)) return;
    const std::optional<std::string> refusal = Forward(line);
    if (refusal) Refuse(lineNumber, *refusal, ownId);
}

void Server::TakeCommand(const KXP::Document& line, size_t lineNumber) {
    const std::string command = Text(line, "command");
    if (const std::optional<std::string> failure = RunCommand(command))
        Refuse(lineNumber, command + ": " + *failure, {});
    else
        Write(MakeTexts({{"command", command}}));
}

std::optional<std::string> Server::RunCommand(const std::string& command) {
    if (command == "stop") return session_.RunStop();
    if (command == "start") return session_.RunStart();
    if (command != "restart") return "no such command";
    std::optional<std::string> failure = session_.RunRestart();
    // The next instance knows neither the requests of the last one nor its subscribers.
    outstanding_.clear();
    subscriptions_.Make(session_);
    return failure;
}

std::optional<std::string> Server::Forward(const KXP::Document& envelope) {
    // These two announce members of the bus and have no answer.
    const std::string method = Text(envelope, "method");
    if (IsResponse(envelope) || IsPersistent(envelope) || method == "JOIN" || method == "LEAVE")
        return session_.Send(envelope);
    // The answer may come before Send returns.
    const std::string id = Text(envelope, "uniqueid");
    outstanding_.insert(id);
    std::optional<std::string> refusal = session_.Send(envelope);
    const auto entry = outstanding_.find(id);
    if (refusal && entry != outstanding_.end()) outstanding_.erase(entry);
    return refusal;
}

bool Server::TakeSubscription(const KXP::Document& envelope) {
    const std::string method = Text(envelope, "method");
    const std::string id = Text(envelope, "uniqueid");
    if (!IsPersistent(envelope) || IsResponse(envelope) || id.empty() || !subscriptions_.Has(method))
        return false;
    subscribers_[method].push_back({Text(envelope, "source_system"), Text(envelope, "source_module"), id});
    return true;
}

void Server::Refuse(size_t lineNumber, const std::string& text, const std::string& id) {
    Say("line " + std::to_string(lineNumber) + ": " + text);
    KXP::Document line(rapidjson::kObjectType);
    KXP::Allocator& allocator = line.GetAllocator();
    KXP::Value error(rapidjson::kObjectType);
    error.AddMember("line", static_cast<uint64_t>(lineNumber), allocator);
    error.AddMember("text", KXP::Value(text, allocator), allocator);
    line.AddMember("error", error, allocator);
    if (!id.empty()) SetText(line, "reference_uniqueid", id);
    Write(line);
}

void Server::OnMessage(KXP::Document& message) {
    if (subscriptions_.Match(message)) {
        FanOut(message);
        return;
    }
    const auto entry = outstanding_.find(Text(message, "reference_uniqueid"));
    if (entry != outstanding_.end() && !IsNotification(message)) outstanding_.erase(entry);
    Write(message);
}

void Server::FanOut(KXP::Document& notification) {
    const std::string method = Text(notification, "method");
    const std::vector<Subscriber>& subscribers = subscribers_[method];
    for (const Subscriber& subscriber : subscribers) {
        if (!subscriber.system.empty()) SetText(notification, "system", subscriber.system);
        if (!subscriber.module.empty()) SetText(notification, "module", subscriber.module);
        SetText(notification, "reference_uniqueid", subscriber.id);
        Write(notification);
    }
    if (!subscribers.empty()) return;
    SetText(notification, "reference_uniqueid", method);
    Write(notification);
}

void Server::Write(const KXP::Value& line) {
    if (recorder_) recorder_->Out(line);
    open_ = sink_(line);
}

void RunServe(Session& session, Output& output, Recorder* recorder) {
    const Server::Sink sink = [&output](const KXP::Value& line) {
        KXP::JsonBuffer text;
        KXP::JsonWriter writer(text);
        line.Accept(writer);
        text.Put('\n');
        return output.Write({text.GetString(), text.GetSize()});
    };
    Server(session, sink, recorder).Run();
}

}  // namespace host
