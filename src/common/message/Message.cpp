#include "common/message/Message.h"

#include "common/Exception.h"
#include "common/JsonHelpers.h"

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

std::unique_ptr<JSONMessage> CreateMessage(const char* json) {
    auto message = std::make_unique<JSONMessage>(JSONMessage::Empty{});
    message->Parse(json ? json : "");
    return message;
}

std::unique_ptr<JSONMessage> CreateCopy(const JSONMessage& message) {
    auto copy = std::make_unique<JSONMessage>(JSONMessage::Empty{});
    copy->CopyFrom(message);
    return copy;
}

std::unique_ptr<JSONMessage> CreateRequest(const char* system, const char* module, const char* method,
                                           const char* sourceSystem, const char* sourceModule,
                                           const char* payload) {
    auto message = std::make_unique<JSONMessage>();
    message->set_target_system(system);
    message->set_target_module(module);
    message->set_method(method);
    if (sourceSystem && *sourceSystem) message->set_source_system(sourceSystem);
    if (sourceModule && *sourceModule) message->set_source_module(sourceModule);
    message->set_payload(payload ? payload : "{}");
    return message;
}

std::unique_ptr<JSONMessage> CreateResponse(const JSONMessage& request) {
    auto message = CreateRequest(request.source_system(), request.source_module(), request.method(),
                                 request.target_system(), request.target_module(), nullptr);
    message->set_reference_uniqueid(request.uniqueid());
    return message;
}

std::unique_ptr<JSONMessage> CreateNotification(const char* method, const char* sourceSystem,
                                                const char* sourceModule) {
    auto message = std::make_unique<JSONMessage>();
    message->set_method(method);
    message->set_payload("{}");
    message->set_reference_uniqueid(method);
    message->set_type(JSONMessage::kPersistent);
    message->set_source_system(sourceSystem);
    message->set_source_module(sourceModule);
    return message;
}

bool IsResponse(const JSONMessage& message) {
    return message.has_reference_uniqueid() && *message.reference_uniqueid() != '\0';
}

bool IsPersistent(const JSONMessage& message) {
    return message.has_type() && message.type() == JSONMessage::kPersistent;
}

std::string Method(const JSONMessage& message) {
    return message.method();
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
