#include "common/message/JSONMessage.h"

#include <algorithm>
#include <cstring>
#include <iterator>
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

constexpr std::string_view kFieldNames[] = {"system",  "module",        "method",        "uniqueid",
                                            "payload", "source_system", "source_module", "reference_uniqueid",
                                            "type"};

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
    const bool isEnvelope = !ParseJSON(json, document_).IsError() && document_.IsObject();
    if (!isEnvelope) document_.SetObject();
    FindFields();
    if (!isEnvelope) throw JSONFieldError(parseError);
    CheckEnvelope();
}

void JSONMessage::FindFields() {
    static_assert(std::size(kFieldNames) == static_cast<size_t>(Field::Count));
    places_ = {};
    rapidjson::SizeType number = 0;
    for (const Value::Member& member : std::as_const(document_).GetObject()) {
        ++number;
        const std::string_view name(member.name.GetString(), member.name.GetStringLength());
        const auto* const field = std::find(std::begin(kFieldNames), std::end(kFieldNames), name);
        if (field == std::end(kFieldNames)) continue;
        rapidjson::SizeType& place = places_[static_cast<size_t>(field - kFieldNames)];
        if (place == 0) place = number;
    }
}

void JSONMessage::CheckEnvelope() {
    if (!Has(Field::Payload)) Member(Field::Payload).SetObject();
    if (!payload().IsObject()) throw JSONFieldError("Expected payload field to be an object");
    for (const Field field : {Field::System, Field::Module, Field::Method, Field::UniqueId})
        CheckRequiredString(field);
}

void JSONMessage::CheckRequiredString(Field field) const {
    const std::string key(kFieldNames[static_cast<size_t>(field)]);
    const Value* const value = Find(field);
    if (!value) throw JSONFieldError("Could not find required field " + key);
    const auto fail = [&key](const std::string& why) {
        throw JSONFieldError("Required string " + key + why);
    };
    if (!value->IsString()) fail(std::string(" unexpected type ") + JsonTypeName(*value));
    if (value->GetStringLength() == 0) fail(" is empty");
    // All readers take these as C strings and would see another text.
    if (std::strlen(value->GetString()) != value->GetStringLength()) fail(" holds a zero character");
}

void JSONMessage::CopyFrom(const JSONMessage& other) {
    CopyJSON(other.document_, document_);
    places_ = other.places_;
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
    const Value* const value = Find(Field::Type);
    return value && value->IsInt() ? value->GetInt() : 0;
}

bool JSONMessage::has_type() const {
    const Value* const value = Find(Field::Type);
    return value && value->IsInt();
}

const Value& JSONMessage::payload() const {
    static const Value null;
    const Value* const value = Find(Field::Payload);
    return value ? *value : null;
}

Value& JSONMessage::payload() {
    return Has(Field::Payload) ? Member(Field::Payload) : absent_.SetNull();
}

void JSONMessage::set_type(int type) {
    Member(Field::Type).SetInt(type);
}

void JSONMessage::set_payload(const char* json) {
    // Nearly each message begins with it, and a parser takes longer.
    if (json == kEmptyObject) {
        Member(Field::Payload).SetObject();
        return;
    }
    Document parsed(&document_.GetAllocator());
    if (ParseJSON(json, parsed).IsError()) throw JSONFieldError("Unable to parse JSON payload");
    if (!parsed.IsObject()) throw JSONFieldError("Expected payload field to be an object");
    Member(Field::Payload) = static_cast<Value&>(parsed);
}

const Value* JSONMessage::Find(Field field) const {
    const rapidjson::SizeType place = places_[static_cast<size_t>(field)];
    return place > 0 ? &(document_.MemberBegin() + (place - 1))->value : nullptr;
}

const char* JSONMessage::Text(Field field) const {
    const Value* const value = Find(field);
    return value && value->IsString() ? value->GetString() : "";
}

Value& JSONMessage::Member(Field field) {
    rapidjson::SizeType& place = places_[static_cast<size_t>(field)];
    if (place == 0) {
        const std::string_view name = kFieldNames[static_cast<size_t>(field)];
        document_.AddMember(
            Value(rapidjson::StringRef(name.data(), static_cast<rapidjson::SizeType>(name.size()))), Value(),
            allocator());
        place = document_.MemberCount();
    }
    return (document_.MemberBegin() + (place - 1))->value;
}

void JSONMessage::SetText(Field field, const char* text) {
    Member(field).SetString(text, allocator());
}

}  // namespace KXP
