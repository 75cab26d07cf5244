#include "core/container/cef/PreparedAnswer.h"

#include <algorithm>
#include <cstdio>

#include "common/message/Message.h"
#include "common/text/TextUtil.h"
#include "core/container/cef/EnvelopeScan.h"

namespace {

// Before the GUID of the answer, which is made at the end.
constexpr std::string_view kStart = R"({"uniqueid":")";

constexpr std::string_view Payload(LostBy reason) {
    // The codes 0x8007000E and 0x80004004.
    return reason == LostBy::Memory
               ? R"({"_return_code":-2147024882,"_return_status":"Out of memory","_return_internal":0}})"
               : R"({"_return_code":-2147467260,"_return_status":"The plug-in has ended","_return_internal":0}})";
}

void PutGuid(char* text) {
    char guid[KXP::kGuidLength + 1];
    KXP::GenerateGUID(guid);
    std::copy_n(guid, KXP::kGuidLength, text + kStart.size());
}

}  // namespace

PreparedAnswer::PreparedAnswer(const KXP::JSONMessage& request) {
    KXP::JsonBuffer buffer;
    KXP::JsonWriter writer(buffer);
    writer.StartObject();
    const auto put = [&](const char* key, const char* value) {
        writer.Key(key);
        writer.String(value);
    };
    put("uniqueid", std::string(KXP::kGuidLength, '0').c_str());
    put("system", request.source_system());
    put("module", request.source_module());
    put("method", request.method());
    put("source_system", request.target_system());
    put("source_module", request.target_module());
    put("reference_uniqueid", request.uniqueid());
    writer.Key("type");
    writer.Int(KXP::JSONMessage::kOrdinary);
    writer.Key("payload");
    text_.reserve(buffer.GetSize() + 1 +
                  std::max(Payload(LostBy::Memory).size(), Payload(LostBy::End).size()));
    text_.assign(buffer.GetString(), buffer.GetSize());
    text_ += ':';
}

const char* PreparedAnswer::Complete(LostBy reason) noexcept {
    PutGuid(text_.data());
    text_ += Payload(reason);
    return text_.c_str();
}

const char* UnreadAnswer::Make(std::string_view json) noexcept {
    EnvelopeNames names;
    if (!ScanEnvelope(json, names)) return nullptr;
    const auto size = [](std::string_view name) {
        return static_cast<int>(std::min(name.size(), sizeof text_));
    };
    const int length = std::snprintf(
        text_, sizeof text_,
        R"(%s%36s","system":"%.*s","module":"%.*s","method":"%.*s","source_system":"%.*s",)"
        R"("source_module":"%.*s","reference_uniqueid":"%.*s","type":%d,"payload":%s)",
        kStart.data(), "", size(names.sourceSystem), names.sourceSystem.data(), size(names.sourceModule),
        names.sourceModule.data(), size(names.method), names.method.data(), size(names.system),
        names.system.data(), size(names.module), names.module.data(), size(names.uniqueid),
        names.uniqueid.data(), KXP::JSONMessage::kOrdinary, Payload(LostBy::Memory).data());
    if (length < 0 || static_cast<size_t>(length) >= sizeof text_) return nullptr;
    PutGuid(text_);
    return text_;
}
