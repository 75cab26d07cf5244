#include "common/message/JSONMessage.h"

#include <cstring>
#include <utility>

#include "CobalixUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "common/results/Exception.h"
#include "common/text/TextUtil.h"

namespace KXP {
namespace {

constexpr std::string_view kEmptyObject = "{}";
constexpr size_t kUsualEnvelopeBytes = 512;

bool WriteJSON(const Value& value, JsonBuffer& buffer) {
    BriefAllocator memory;
    JsonWriter writer(buffer, &memory);
    return value.Accept(writer);
}

void CheckRequiredString(const Value& object, const char* key) {
    const auto member = object.FindMember(key);
    if (member == object.MemberEnd())
        throw JSONFieldError(std::string("Could not find required field ") + key);
    const auto fail = [key](const std::string& why) {
        throw JSONFieldError(std::string("Required string ") + key + why);
    };
    if (!member->value.IsString()) fail(std::string(" unexpected type ") + JsonTypeName(member->value));
    if (member->value.GetStringLength() == 0) fail(" is empty");
    // All readers take these as C strings and would see another text.
    if (std::strlen(member->value.GetString()) != member->value.GetStringLength())
        fail(" holds a zero character");
}

}  // namespace

JSONMessage::JSONMessage(BusMessage first, BusMessage second)
    : first_(std::move(first)), second_(std::move(second)) {
    set_uniqueid(GenerateGUID().c_str());
    set_type(kOrdinary);
}

JSONMessage::JSONMessage(const std::string& json, BusMessage first, BusMessage second)
    : first_(std::move(first)), second_(std::move(second)) {
    Parse(json, "Unable to parse JSON payload");
}

JSONMessage::JSONMessage(const char* system, const char* module, const char* method, const char* uniqueid,
                         const char* payload, BusMessage first, BusMessage second)
    : first_(std::move(first)), second_(std::move(second)) {
    set_uniqueid(uniqueid);
    set_type(kOrdinary);
    set_target_system(system);
    set_target_module(module);
    set_method(method);
    set_payload(payload ? payload : "{}");
}

void JSONMessage::Parse(std::string_view json, const char* parseError) {
    if (ParseJSON(json, document_).IsError() || !document_.IsObject()) {
        document_.SetObject();
        throw JSONFieldError(parseError);
    }
    CheckEnvelope();
}

void JSONMessage::CheckEnvelope() {
    if (!Has("payload")) Member("payload").SetObject();
    if (!payload().IsObject()) throw JSONFieldError("Expected payload field to be an object");
    for (const char* key : {"system", "module", "method", "uniqueid"})
        CheckRequiredString(document_, key);
}

void JSONMessage::CopyFrom(const JSONMessage& other) {
    CopyJSON(other.document_, document_);
    first_ = other.first_;
    second_ = other.second_;
    writtenBody_ = other.writtenBody_;
}

bool JSONMessage::Serialize(JsonBuffer& buffer) const {
    if (writtenBody_ ? WriteWithBody(buffer) : WriteJSON(document_, buffer)) return true;
    KXP_LOG(LogFailure, "Error encoding JSON string");
    return false;
}

bool JSONMessage::WriteWithBody(JsonBuffer& buffer) const {
    JsonBuffer others;
    if (!WriteJSON(payload(), others)) return false;
    const std::string_view body(writtenBody_->text.GetString(), writtenBody_->text.GetSize());
    const std::string_view rest(others.GetString(), others.GetSize());
    const bool areBoth = body.size() > kEmptyObject.size() && rest.size() > kEmptyObject.size();
    buffer.Reserve(body.size() + rest.size() + kUsualEnvelopeBytes);
    JsonWriter writer(buffer);
    writer.StartObject();
    for (const Value::Member& member : document_.GetObject()) {
        writer.Key(member.name.GetString(), member.name.GetStringLength());
        if (&member.value != &payload()) {
            if (!member.value.Accept(writer)) return false;
            continue;
        }
        writer.RawValue("", 0, rapidjson::kObjectType);  // what goes before a value
        Append(body.substr(0, body.size() - 1), buffer);
        if (areBoth) buffer.Put(',');
        Append(rest.substr(1), buffer);
    }
    return writer.EndObject();
}

int JSONMessage::type() const {
    const auto member = document_.FindMember("type");
    return member != document_.MemberEnd() && member->value.IsInt() ? member->value.GetInt() : 0;
}

bool JSONMessage::has_type() const {
    const auto member = document_.FindMember("type");
    return member != document_.MemberEnd() && member->value.IsInt();
}

const Value& JSONMessage::payload() const {
    static const Value null;
    const auto member = document_.FindMember("payload");
    return member == document_.MemberEnd() ? null : member->value;
}

Value& JSONMessage::payload() {
    const auto member = document_.FindMember("payload");
    if (member != document_.MemberEnd()) return member->value;
    return absent_.SetNull();
}

void JSONMessage::set_type(int type) {
    Member("type").SetInt(type);
}

void JSONMessage::set_payload(const char* json) {
    // Nearly each message begins with it, and a parser takes longer.
    if (json == kEmptyObject) {
        Member("payload").SetObject();
        return;
    }
    Document parsed(&document_.GetAllocator());
    if (ParseJSON(json, parsed).IsError()) throw JSONFieldError("Unable to parse JSON payload");
    if (!parsed.IsObject()) throw JSONFieldError("Expected payload field to be an object");
    Member("payload") = static_cast<Value&>(parsed);
}

const char* JSONMessage::Text(const char* key) const {
    const auto member = document_.FindMember(key);
    return member != document_.MemberEnd() && member->value.IsString() ? member->value.GetString() : "";
}

Value& JSONMessage::Member(const char* key) {
    const auto member = document_.FindMember(key);
    if (member != document_.MemberEnd()) return member->value;
    // The keys of envelopes are literals.
    document_.AddMember(Value(rapidjson::StringRef(key)), Value(), allocator());
    return (document_.MemberEnd() - 1)->value;
}

void JSONMessage::SetText(const char* key, const char* text) {
    Member(key).SetString(text, allocator());
}

}  // namespace KXP
