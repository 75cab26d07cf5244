// The scan of an envelope that makes do without memory, against the parser: the same requests are owed an
// answer, under the same names.
#include <string>

#include "common/json/JsonParse.h"
#include "common/message/Message.h"
#include "common/results/Exception.h"
#include "core/container/cef/EnvelopeScan.h"
#include "core/container/cef/PreparedAnswer.h"
#include "fuzz/Plain.h"
#include "fuzz/QuietLog.h"

namespace {

using plain::Demand;

// Of escapes the scan keeps the text, and of what occurs twice the two need not choose the same.
bool IsSimple(const std::string& text, const KXP::Document& envelope) {
    for (auto one = envelope.MemberBegin(); one != envelope.MemberEnd(); ++one)
        if (envelope.FindMember(one->name) != one) return false;
    return text.find('\\') == std::string::npos;
}

void Compare(const std::string& text, const KXP::JSONMessage& message) {
    using namespace KXP::Message;
    const bool isOwed = !IsResponse(message) && !IsPersistent(message) && !IsAnnouncement(message.method());
    EnvelopeNames names;
    Demand(ScanEnvelope(text, names) == isOwed);
    if (!isOwed) return;
    Demand(names.system == message.target_system() && names.module == message.target_module());
    Demand(names.method == message.method() && names.uniqueid == message.uniqueid());
    Demand(names.sourceSystem == message.source_system() && names.sourceModule == message.source_module());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    const std::string text = std::string(reinterpret_cast<const char*>(data), size).c_str();
    UnreadAnswer unread;
    const char* const answer = unread.Make(text);
    try {
        const auto message = KXP::Message::CreateMessage(text.c_str());
        if (!IsSimple(text, message->document())) return 0;
        Compare(text, *message);
        if (!answer) return 0;
        const auto sent = KXP::Message::CreateMessage(answer);
        Demand(sent->reference_uniqueid() == std::string(message->uniqueid()));
        Demand(KXP::Message::GetReturnValue(*sent).code == static_cast<int32_t>(0x8007000E));
    } catch (const KXP::JSONFieldError&) {
        return 0;
    }
    return 0;
}
