#include "common/message/Message.h"

#include "common/json/JsonHelpers.h"
#include "common/results/Exception.h"

namespace KXP::Message {
namespace {

const JsonPointer& CodePointer() {
    static const JsonPointer pointer("/payload/_return_code");
    return pointer;
}

const JsonPointer& StatusPointer() {
    static const JsonPointer pointer("/payload/_return_status");
    return pointer;
}

const JsonPointer& InternalPointer() {
    static const JsonPointer pointer("/payload/_return_internal");
    return pointer;
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
    Document& document = message.document();
    CodePointer().Set(document, value.code);
    StatusPointer().Set(document, value.text.c_str());
    InternalPointer().Set(document, value.internal);
}

RetVal GetReturnValue(const JSONMessage& message) {
    RetVal value;
    if (const Value* code = CodePointer().Get(message.document()); code && code->IsInt())
        value.code = code->GetInt();
    if (const Value* status = StatusPointer().Get(message.document()); status && status->IsString())
        value.text = status->GetString();
    if (const Value* internal = InternalPointer().Get(message.document()); internal && internal->IsInt())
        value.internal = internal->GetInt();
    return value;
}

}  // namespace KXP::Message
