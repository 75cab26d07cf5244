#include "gallery-host/page/LibraryBus.h"

#include <algorithm>
#include <utility>

#include "gallery-host/message/Envelope.h"
#include "gallery-host/page/PageMethods.h"

namespace host::page {
namespace {

// A page needs one for each notification; queries that it cancels stay.
constexpr size_t kMaxSubscriptions = 64;
constexpr size_t kMaxIdBytes = 256;

std::string Quoted(const std::string& text) {
    return ToText(KXP::Value(rapidjson::StringRef(text)));
}

// A message for several pages: its text without the identifier that differs.
std::shared_ptr<const std::string> SharedRest(KXP::Document& message) {
    message.RemoveMember("reference_uniqueid");
    message.RemoveMember("uniqueid");
    return std::make_shared<const std::string>(ToText(message), 1);
}

Frame MakeFrame(Frame::Kind kind, const std::string& id, std::shared_ptr<const std::string> rest) {
    return {kind, R"({"reference_uniqueid":)" + Quoted(id) + ",", std::move(rest)};
}

Frame Refusal(const std::string& id, const std::string& reason) {
    return {Frame::Kind::kAnswer,
            R"({"error":{"text":)" + Quoted(reason) + R"(},"reference_uniqueid":)" + Quoted(id) + "}",
            nullptr};
}

void Send(const std::weak_ptr<IPageSocket>& socket, Frame frame) {
    if (const std::shared_ptr<IPageSocket> open = socket.lock()) open->Send(std::move(frame));
}

}  // namespace

LibraryBus::LibraryBus(Session& session, Handles& handles, GalleryFolder& gallery)
    : session_(session),
      handles_(handles),
      gallery_(gallery),
      hostMethods_(handles, gallery),
      library_(session),
      requests_(library_, [this](const auto& askers, KXP::Document* answer,
                                 const std::string& refusal) { OnAnswer(askers, answer, refusal); }),
      thumbs_(library_),
      listening_([this, &session] {
          const KXP::Document settings = session.Ask("GetSettings", KXP::Value(rapidjson::kObjectType));
          if (const KXP::Value* members = Find(Payload(settings), "settings"))
              gallery_.Set(Text(*members, "path"));
          return session.Listen([this](KXP::Document& message, auto) { OnMessage(message); });
      }()) {
    subscriptions_.Make(session_);
}

void LibraryBus::Run() {
    while (!quit_) {
        if (session_.Pump(Deadline::max(), mailbox_.fd()) == PluginLoader::Wake::kDescriptor)
            mailbox_.RunAll();
        requests_.Advance();
        thumbs_.Advance();
    }
}

void LibraryBus::Quit() {
    mailbox_.Post([this] { quit_ = true; });
}

void LibraryBus::Open(SocketId id, std::weak_ptr<IPageSocket> socket) {
    mailbox_.Post([this, id, socket = std::move(socket)] { tabs_[id].socket = socket; });
}

void LibraryBus::Receive(SocketId id, std::string text) {
    mailbox_.Post([this, id, text = std::move(text)] {
        const auto tab = tabs_.find(id);
        if (tab != tabs_.end()) OnFrame(id, tab->second, text);
    });
}

void LibraryBus::Close(SocketId id) {
    mailbox_.Post([this, id] {
        tabs_.erase(id);
        requests_.Drop(id);
    });
}

void LibraryBus::MakeThumbnail(ThumbnailRequest request) {
    mailbox_.Post([this, request = std::move(request)] { thumbs_.Add(request); });
}

void LibraryBus::OnFrame(SocketId socket, Tab& tab, const std::string& text) {
    KXP::Document envelope;
    std::string error;
    if (!ParseObject(text, envelope, error)) {
        Send(tab.socket, Refusal({}, error));
        return;
    }
    // Nothing else of the envelope goes any further.
    const std::string id = Text(envelope, "uniqueid");
    const std::string method = Text(envelope, "method");
    const std::string module = Text(envelope, "module");
    std::string refusal;
    if (id.empty() || id.size() > kMaxIdBytes)
        refusal = "the message has no uniqueid of a usable length";
    else if (module == "Host")
        refusal = AskHost(tab, method, id, Payload(envelope));
    else if (!module.empty() && module != kModule)
        refusal = "there is no such module";
    else if (IsPersistent(envelope))
        refusal = Subscribe(tab, method, id);
    else
        refusal = AskLibrary(socket, method, id, Payload(envelope));
    if (!refusal.empty()) Send(tab.socket, Refusal(id.size() > kMaxIdBytes ? std::string() : id, refusal));
}

std::string LibraryBus::Subscribe(Tab& tab, const std::string& method, const std::string& id) {
    if (!IsNotificationMethod(method)) return "there is no such notification";
    if (tab.subscriptions.size() >= kMaxSubscriptions) return "there are too many subscriptions";
    tab.subscriptions.push_back({method, id});
    if (const std::shared_ptr<IPageSocket> socket = tab.socket.lock()) socket->EndUnanswered();
    return {};
}

std::string LibraryBus::AskLibrary(SocketId socket, const std::string& method, const std::string& id,
                                   const KXP::Value& payload) {
    if (!IsPageMethod(method)) return "pages cannot ask for this";
    requests_.Add({socket, id}, method, payload);
    return {};
}

std::string LibraryBus::AskHost(Tab& tab, const std::string& method, const std::string& id,
                                const KXP::Value& payload) {
    const std::vector<std::string>& names = HostMethodNames();
    if (std::find(names.begin(), names.end(), method) == names.end()) return "the host has no such method";
    KXP::Document answer = hostMethods_.Answer(method, payload);
    Send(tab.socket, MakeFrame(Frame::Kind::kAnswer, id, SharedRest(answer)));
    return {};
}

void LibraryBus::OnMessage(KXP::Document& message) {
    if (!subscriptions_.Match(message)) {
        library_.Take(message);
        return;
    }
    if (Text(message, "method") == "PathChangeNotification") gallery_.Set(Text(Payload(message), "path"));
    FanOut(message);
}

void LibraryBus::OnAnswer(const PageRequests::Askers& askers, KXP::Document* answer,
                          const std::string& refusal) {
    std::shared_ptr<const std::string> rest;
    if (answer) {
        handles_.AddTo(*answer, answer->GetAllocator());
        rest = SharedRest(*answer);
    }
    for (const PageRequests::Asker& asker : askers) {
        const auto tab = tabs_.find(asker.socket);
        if (tab == tabs_.end()) continue;
        Send(tab->second.socket,
             rest ? MakeFrame(Frame::Kind::kAnswer, asker.id, rest) : Refusal(asker.id, refusal));
    }
}

void LibraryBus::FanOut(KXP::Document& notification) {
    const std::string method = Text(notification, "method");
    handles_.AddTo(notification, notification.GetAllocator());
    const std::shared_ptr<const std::string> rest = SharedRest(notification);
    for (const auto& [id, tab] : tabs_)
        for (const Subscription& subscription : tab.subscriptions)
            if (subscription.method == method)
                Send(tab.socket, MakeFrame(Frame::Kind::kNotification, subscription.id, rest));
}

}  // namespace host::page
