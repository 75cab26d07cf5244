#include "core/container/cef/CefJsonReceiver.h"

#include "CobalixUtil.h"

namespace {

constexpr size_t kUsualMessageBytes = 256;

}  // namespace

bool CefJsonReceiver::HandleMsg(std::unique_ptr<KXP::JSONMessage> message) {
    if (!message) {
        KXP_LOG(KXP::LogFailure, "Got NULL message");
        return false;
    }
    KXP::JsonBuffer buffer(nullptr, kUsualMessageBytes);
    if (!message->Serialize(buffer)) {
        KXP_LOG(KXP::LogFailure, "Could not serialize outgoing JSON message");
        return false;
    }
    callback_.Call(ZvCefPluginJsonMessage, buffer.GetString());
    return true;
}
