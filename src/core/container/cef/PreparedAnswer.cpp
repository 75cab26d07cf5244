#include "core/container/cef/PreparedAnswer.h"

#include <algorithm>
#include <cstdio>

#include "common/message/Message.h"
#include "common/text/TextUtil.h"
#include "core/container/cef/EnvelopeScan.h"

namespace {

// Before the GUID of the answer, which is made at the end.
constexpr std::string_view kStart = R"({"uniqueid":")";
// Of a usual one, with its payload.
constexpr size_t kUsualBytes = 512;

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

// Each request comes by here: one block of memory, and a writer for each name, which takes none.
PreparedAnswer::PreparedAnswer(const KXP::JSONMessage& request) : text_(&KXP::g_jsonAllocator, kUsualBytes) {
    const auto put = [this](std::string_view member, const char* name) {
        KXP::Append(member, text_);
        KXP::JsonWriter(text_).String(name);
    };
    KXP::Append(kStart, text_);
    std::fill_n(text_.Push(KXP::kGuidLength), KXP::kGuidLength, '0');
    put(R"(","system":)", request.source_system());
    put(R"(,"module":)", request.source_module());
    put(R"(,"method":)", request.method());
    put(R"(,"source_system":)", request.target_system());
    put(R"(,"source_module":)", request.target_module());
    put(R"(,"reference_uniqueid":)", request.uniqueid());
    KXP::Append(R"(,"type":)", text_);
    KXP::JsonWriter(text_).Int(KXP::JSONMessage::kOrdinary);
    KXP::Append(R"(,"payload":)", text_);
    text_.Reserve(std::max(Payload(LostBy::Memory).size(), Payload(LostBy::End).size()) + 1);
}

const char* PreparedAnswer::Complete(LostBy reason) noexcept {
    const std::string_view payload = Payload(reason);
    const size_t prepared = text_.GetSize();
    char* const end = text_.Push(payload.size());
    payload.copy(end, payload.size());
    PutGuid(end - prepared);
    return text_.GetString();
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
