#include "core/container/cef/CefJsonReceiver.h"

#include <exception>
#include <new>
#include <utility>

#include "CobalixUtil.h"

namespace {

constexpr size_t kUsualMessageBytes = 1024;

}  // namespace

void CefJsonReceiver::Receive(const char* json) {
    std::unique_ptr<KXP::JSONMessage> message = Read(json);
    if (!message) return;
    const std::shared_ptr<KXP::IOwedAnswer> owed = message->owed_answer();
    try {
        // There is no chain behind an instance that could not be initialized: its requests die with it.
        if (!ForwardMsg(std::move(message)) && owed) owed->Settle();
    } catch (const std::exception& error) {
        KXP_LOG(KXP::LogFailure, "Could not forward a message: %s", error.what());
    }
}

// Null when there is no memory for it; a request is answered then.
std::unique_ptr<KXP::JSONMessage> CefJsonReceiver::Read(const char* json) {
    try {
        auto message = KXP::Message::CreateMessage<KXP::JSONMessage>(json);
        open_.Add(*message);
        return message;
    } catch (const std::bad_alloc&) {
        open_.AnswerUnread(json);
        return nullptr;
    }
}

bool CefJsonReceiver::HandleMsg(std::unique_ptr<KXP::JSONMessage> message) {
    if (!message) {
        KXP_LOG(KXP::LogFailure, "Got NULL message");
        return false;
    }
    KXP::JsonBuffer buffer(&KXP::g_jsonAllocator, kUsualMessageBytes);
    if (!message->Serialize(buffer)) {
        KXP_LOG(KXP::LogFailure, "Could not serialize outgoing JSON message");
        return false;
    }
    const char* const text = buffer.GetString();
    const auto& owed = message->owed_answer();
    if (!owed || owed->Settle()) callback_.Call(ZvCefPluginJsonMessage, text);
    return true;
}
