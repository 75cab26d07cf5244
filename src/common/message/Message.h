// Creators and readers of messages. They are templates, so that the handler chain is written once for both
// kinds of message.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "common/message/GenericMessage.h"
#include "common/message/JSONMessage.h"
#include "common/results/RetVal.h"

namespace KXP::Message {

// Parses and checks one envelope; a missing payload becomes an empty object. Throws JSONFieldError, also for
// a null text.
template <typename T = JSONMessage>
std::unique_ptr<T> CreateMessage(const char* json);
template <>
std::unique_ptr<JSONMessage> CreateMessage<JSONMessage>(const char* json);
template <>
std::unique_ptr<GenericMessage> CreateMessage<GenericMessage>(const char* json);

std::unique_ptr<JSONMessage> CreateCopy(const JSONMessage& message);
std::unique_ptr<GenericMessage> CreateCopy(const GenericMessage& message);

// A new ordinary message with a new uniqueid. Null or empty source fields are left out; a null payload stands
// for an empty object. Throws JSONFieldError for a payload that does not parse.
template <typename T = JSONMessage>
std::unique_ptr<T> CreateRequest(const char* system, const char* module, const char* method,
                                 const char* sourceSystem, const char* sourceModule, const char* payload) {
    auto message = std::make_unique<T>();
    message->set_target_system(system);
    message->set_target_module(module);
    message->set_method(method);
    if (sourceSystem && *sourceSystem) message->set_source_system(sourceSystem);
    if (sourceModule && *sourceModule) message->set_source_module(sourceModule);
    message->set_payload(payload ? payload : "{}");
    return message;
}

inline void ShareOwedAnswer(const JSONMessage& request, JSONMessage& response) {
    response.set_owed_answer(request.owed_answer());
}
inline void ShareOwedAnswer(const GenericMessage&, GenericMessage&) {}

// The answer to a request, with an empty payload, addressed to where the request came from.
template <typename T>
std::unique_ptr<T> CreateResponse(const T& request) {
    auto message = CreateRequest<T>(request.source_system(), request.source_module(), request.method(),
                                    request.target_system(), request.target_module(), nullptr);
    message->set_reference_uniqueid(request.uniqueid());
    ShareOwedAnswer(request, *message);
    return message;
}

// A notification travels as a response that is persistent. Its reference is its own method name, which makes
// it a response without answering any one request.
template <typename T = JSONMessage>
std::unique_ptr<T> CreateNotification(const char* method, const char* sourceSystem,
                                      const char* sourceModule) {
    auto message = std::make_unique<T>();
    message->set_method(method);
    message->set_payload("{}");
    message->set_reference_uniqueid(method);
    message->set_type(JSONMessage::kPersistent);
    message->set_source_system(sourceSystem);
    message->set_source_module(sourceModule);
    return message;
}

template <typename T>
bool IsResponse(const T& message) {
    return *message.reference_uniqueid() != '\0';
}

template <typename T>
bool IsPersistent(const T& message) {
    return message.type() == JSONMessage::kPersistent;
}

// The bus announces its members with these requests; nobody expects an answer.
inline bool IsAnnouncement(std::string_view method) {
    return method == "JOIN" || method == "LEAVE";
}

template <typename T>
std::string Method(const T& message) {
    return message.method();
}

// Writes the result into the payload as _return_code, _return_status and _return_internal.
void SetReturnValue(JSONMessage& message, const RetVal& value);
// Members that are missing or of another type count as 0, "Success" and 0.
RetVal GetReturnValue(const JSONMessage& message);

// The generic channel has no return fields.
inline void SetReturnValue(GenericMessage&, const RetVal&) {}
inline RetVal GetReturnValue(const GenericMessage&) {
    return {};
}

}  // namespace KXP::Message
