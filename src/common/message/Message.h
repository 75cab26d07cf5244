// Creators and readers of messages.
#pragma once

#include <memory>
#include <string>

#include "common/RetVal.h"
#include "common/message/JSONMessage.h"

namespace KXP::Message {

// Parses and checks one envelope; a missing payload becomes an empty object. Throws JSONFieldError, also for
// a null text.
std::unique_ptr<JSONMessage> CreateMessage(const char* json);

std::unique_ptr<JSONMessage> CreateCopy(const JSONMessage& message);

// A new ordinary message with a new uniqueid. Null or empty source fields are left out; a null payload stands
// for an empty object. Throws JSONFieldError for a payload that does not parse.
std::unique_ptr<JSONMessage> CreateRequest(const char* system, const char* module, const char* method,
                                           const char* sourceSystem, const char* sourceModule,
                                           const char* payload);

// The answer to a request, with an empty payload, addressed to where the request came from.
std::unique_ptr<JSONMessage> CreateResponse(const JSONMessage& request);

// A notification travels as a response that is persistent. Its reference is its own method name, which makes
// it a response without answering any one request.
std::unique_ptr<JSONMessage> CreateNotification(const char* method, const char* sourceSystem,
                                                const char* sourceModule);

bool IsResponse(const JSONMessage& message);
bool IsPersistent(const JSONMessage& message);
std::string Method(const JSONMessage& message);

// Writes the result into the payload as _return_code, _return_status and _return_internal.
void SetReturnValue(JSONMessage& message, const RetVal& value);
// Members that are missing or of another type count as 0, "Success" and 0.
RetVal GetReturnValue(const JSONMessage& message);

}  // namespace KXP::Message
