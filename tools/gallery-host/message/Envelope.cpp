#include "gallery-host/message/Envelope.h"

#include <cstdio>
#include <random>

#include "common/json/JsonParse.h"

namespace host {
namespace {

void AddIfMissing(KXP::Document& envelope, const char* key, const std::string& text) {
    if (!envelope.HasMember(key)) AddText(envelope, key, text);
}

}  // namespace

const std::vector<std::string>& NotificationMethods() {
    static const std::vector<std::string> methods = {
        "GalleryNotifications",
        "MontageNotification",
        "PathChangeNotification",
        "TempFolderChangeNotification",
        "GalleryCapStateChangeNotification",
        "GalleryUpdatedNotification",
    };
    return methods;
}

std::string NewUniqueId() {
    std::random_device random;
    uint32_t r[4] = {random(), random(), random(), random()};
    // Version 4, variant 1: RFC 4122, 4.4.
    r[1] = (r[1] & 0xFFFF0FFFu) | 0x4000u;
    r[2] = (r[2] & 0x3FFFFFFFu) | 0x80000000u;
    char text[37];
    std::snprintf(text, sizeof text, "%08x-%04x-%04x-%04x-%04x%08x", r[0], r[1] >> 16, r[1] & 0xFFFF,
                  r[2] >> 16, r[2] & 0xFFFF, r[3]);
    return text;
}

bool ParseObject(std::string_view text, KXP::Document& document, std::string& error) {
    const rapidjson::ParseResult result = KXP::ParseJSON(text, document);
    if (result.IsError()) {
        error = std::string("not JSON at byte ") + std::to_string(result.Offset()) + ": " +
                rapidjson::GetParseError_En(result.Code());
        return false;
    }
    if (document.IsObject()) return true;
    error = "not a JSON object";
    return false;
}

void Complete(KXP::Document& envelope) {
    AddIfMissing(envelope, "system", kSystem);
    AddIfMissing(envelope, "module", kModule);
    AddIfMissing(envelope, "uniqueid", NewUniqueId());
    AddIfMissing(envelope, "source_system", kSourceSystem);
    AddIfMissing(envelope, "source_module", kSourceModule);
    KXP::Allocator& allocator = envelope.GetAllocator();
    if (!envelope.HasMember("type")) envelope.AddMember("type", kOrdinary, allocator);
    if (!envelope.HasMember("payload"))
        envelope.AddMember("payload", KXP::Value(rapidjson::kObjectType), allocator);
}

KXP::Document MakeRequest(const std::string& method, const KXP::Value& payload, int type) {
    KXP::Document envelope(rapidjson::kObjectType);
    KXP::Allocator& allocator = envelope.GetAllocator();
    envelope.AddMember("method", KXP::Value(method, allocator), allocator);
    envelope.AddMember("type", type, allocator);
    envelope.AddMember("payload", KXP::Value(payload, allocator), allocator);
    Complete(envelope);
    return envelope;
}

KXP::Document MakeTexts(std::initializer_list<std::pair<const char*, std::string>> members) {
    KXP::Document object(rapidjson::kObjectType);
    for (const auto& [key, text] : members)
        AddText(object, key, text);
    return object;
}

void AddText(KXP::Document& object, const char* key, const std::string& text) {
    KXP::Allocator& allocator = object.GetAllocator();
    object.AddMember(rapidjson::StringRef(key), KXP::Value(text, allocator), allocator);
}

void SetText(KXP::Document& object, const char* key, const std::string& text) {
    object.RemoveMember(key);
    AddText(object, key, text);
}

const KXP::Value* Find(const KXP::Value& object, const char* key) {
    if (!object.IsObject()) return nullptr;
    const auto member = object.FindMember(key);
    return member == object.MemberEnd() ? nullptr : &member->value;
}

std::string Text(const KXP::Value& object, const char* key) {
    const KXP::Value* value = Find(object, key);
    return value && value->IsString() ? std::string(value->GetString(), value->GetStringLength()) : "";
}

KXP::Value::ConstArray Elements(const KXP::Value& object, const char* key) {
    static const KXP::Value empty(rapidjson::kArrayType);
    const KXP::Value* member = Find(object, key);
    return (member && member->IsArray() ? *member : empty).GetArray();
}

bool IsResponse(const KXP::Document& envelope) {
    return !Text(envelope, "reference_uniqueid").empty();
}

bool IsPersistent(const KXP::Document& envelope) {
    const KXP::Value* type = Find(envelope, "type");
    return type && type->IsInt() && type->GetInt() == kPersistent;
}

bool IsNotification(const KXP::Document& envelope) {
    return IsPersistent(envelope) && IsResponse(envelope);
}

const KXP::Value& Payload(const KXP::Document& envelope) {
    static const KXP::Value empty(rapidjson::kObjectType);
    const KXP::Value* payload = Find(envelope, "payload");
    return payload && payload->IsObject() ? *payload : empty;
}

int32_t ResultCode(const KXP::Document& envelope) {
    const KXP::Value* code = Find(Payload(envelope), "_return_code");
    if (!code) return 0;
    if (code->IsInt()) return code->GetInt();
    // The same 32 bits as an unsigned number.
    return code->IsUint() ? static_cast<int32_t>(code->GetUint()) : 0;
}

std::string ResultText(const KXP::Document& envelope) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08X: ", static_cast<uint32_t>(ResultCode(envelope)));
    return code + Text(Payload(envelope), "_return_status");
}

std::string ToText(const KXP::Value& value) {
    KXP::JsonBuffer buffer;
    KXP::JsonWriter writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

std::string ToPrettyText(const KXP::Value& value) {
    KXP::JsonBuffer buffer;
    KXP::PrettyJsonWriter writer(buffer);
    writer.SetIndent(' ', 2);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace host
