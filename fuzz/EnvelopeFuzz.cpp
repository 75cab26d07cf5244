// The text of an envelope as a page sends it: parsed, checked against the real catalogue, answered and
// written.
#include <cstdint>
#include <string>

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
        chain.writer.SendMsg(KXP::Message::CreateResponse(*message));
        chain.writer.SendMsg(KXP::Message::CreateCopy(*message));
        chain.validator.SendMsg(std::move(message));
    } catch (const KXP::JSONFieldError&) {
        // The one exception that a bad text may end in.
    }
    return 0;
}
