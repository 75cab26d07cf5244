// The text of an envelope as a page sends it: parsed, checked against the real catalogue, answered and
// written.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "common/message/MessageValidator.h"
#include "common/results/Exception.h"
#include "fuzz/QuietLog.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"

namespace {

// Both ends of the chain: writes out what reaches it, as the container would get it.
class Writer : public KXP::MessageSink<KXP::JSONMessage> {
  public:
    bool HandleMsg(std::unique_ptr<KXP::JSONMessage> message) override {
        KXP::JsonBuffer buffer;
        return message->Serialize(buffer);
    }
};

std::string Text(const KXP::JSONMessage& message) {
    KXP::JsonBuffer buffer;
    return message.Serialize(buffer) ? std::string(buffer.GetString(), buffer.GetSize()) : "";
}

// A message that is made of the fields of another has these and no others.
void CheckMaking(const KXP::JSONMessage& message) {
    const auto make = [&](const KXP::Value& payload) {
        return KXP::JSONMessage(message.target_system(), message.target_module(), message.method(),
                                message.uniqueid(), KXP::WriteJSONToString(payload).c_str(), nullptr,
                                nullptr);
    };
    const KXP::JSONMessage made = make(message.payload());
    const KXP::JSONMessage read(Text(made), nullptr, nullptr);
    // By their texts: a document with two members of one name does not even equal itself. Against a message
    // that is made anew, because the last digit of a long number may change whenever it is read.
    if (Text(read) != Text(make(made.payload())) || std::string(read.method()) != message.method() ||
        read.type() != KXP::JSONMessage::kOrdinary)
        std::abort();
    const KXP::JSONMessage without(read.target_system(), read.target_module(), read.method(), read.uniqueid(),
                                   nullptr, nullptr, nullptr);
    if (!without.payload().ObjectEmpty() || !KXP::JSONMessage().payload().IsNull()) std::abort();
    const KXP::JSONMessage empty{KXP::JSONMessage::Empty()};
    if (empty.type() != 0 || *empty.method() || !empty.payload().IsNull()) std::abort();
}

struct Chain {
    Chain() {
        QuietLog();
        if (KXP::ParseJSON(ApiCatalogueText(), api).IsError()) __builtin_trap();
        validator.SetRequestHandler(&writer);
        validator.SetResponseHandler(&writer);
    }

    KXP::Document api;
    KXP::MessageValidator validator{api};
    Writer writer;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Chain chain;
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        auto message = KXP::Message::CreateMessage(text.c_str());
        CheckMaking(*message);
        chain.writer.SendMsg(KXP::Message::CreateResponse(*message));
        chain.writer.SendMsg(KXP::Message::CreateCopy(*message));
        chain.validator.SendMsg(std::move(message));
    } catch (const KXP::JSONFieldError&) {
        // The one exception that a bad text may end in.
    }
    return 0;
}
