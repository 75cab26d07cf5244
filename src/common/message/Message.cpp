#include "common/message/Message.h"

#include "common/json/JsonHelpers.h"
#include "common/results/Exception.h"

namespace KXP::Message {
namespace {

constexpr char kCode[] = "_return_code";
constexpr char kStatus[] = "_return_status";
constexpr char kInternal[] = "_return_internal";

template <size_t kSize>
Value& MemberOf(Value& payload, const char (&name)[kSize], Allocator& allocator) {
    const auto found = payload.FindMember(name);
    if (found != payload.MemberEnd()) return found->value;
    payload.AddMember(Value(name), Value(), allocator);
    return (payload.MemberEnd() - 1)->value;
}

void TakeInt(const Value& payload, const char* name, int& number) {
    const auto found = payload.FindMember(name);
    if (found != payload.MemberEnd() && found->value.IsInt()) number = found->value.GetInt();
}

}  // namespace

template <>
std::unique_ptr<JSONMessage> CreateMessage<JSONMessage>(const char* json) {
    auto message = std::make_unique<JSONMessage>(JSONMessage::Empty{});
    message->Parse(json ? json : "", "Unable to parse JSON envelope");
    return message;
}

template <>
std::unique_ptr<GenericMessage> CreateMessage<GenericMessage>(const char* json) {
    const auto parsed = CreateMessage<JSONMessage>(json);
    auto message = std::make_unique<GenericMessage>();
    message->set_target_system(parsed->target_system());
    message->set_target_module(parsed->target_module());
    message->set_method(parsed->method());
    message->set_uniqueid(parsed->uniqueid());
    message->set_source_system(parsed->source_system());
    message->set_source_module(parsed->source_module());
    message->set_reference_uniqueid(parsed->reference_uniqueid());
    message->set_payload(WriteJSONToString(parsed->payload()).c_str());
    if (parsed->has_type()) message->set_type(parsed->type());
    return message;
}

std::unique_ptr<JSONMessage> CreateCopy(const JSONMessage& message) {
    auto copy = std::make_unique<JSONMessage>(JSONMessage::Empty{});
    copy->CopyFrom(message);
    return copy;
}

std::unique_ptr<GenericMessage> CreateCopy(const GenericMessage& message) {
    return std::make_unique<GenericMessage>(message);
}

void SetReturnValue(JSONMessage& message, const RetVal& value) {
    if (!message.payload().IsObject()) message.set_payload("{}");
    Value& payload = message.payload();
    Allocator& allocator = message.allocator();
    MemberOf(payload, kCode, allocator).SetInt(value.code);
    MemberOf(payload, kStatus, allocator).SetString(value.text.c_str(), allocator);
    MemberOf(payload, kInternal, allocator).SetInt(value.internal);
}

RetVal GetReturnValue(const JSONMessage& message) {
    RetVal value;
    const Value& payload = message.payload();
    if (!payload.IsObject()) return value;
    TakeInt(payload, kCode, value.code);
    TakeInt(payload, kInternal, value.internal);
    const auto status = payload.FindMember(kStatus);
    if (status != payload.MemberEnd() && status->value.IsString()) value.text = status->value.GetString();
    return value;
}

}  // namespace KXP::Message
