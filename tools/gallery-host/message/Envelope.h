// Creates and reads message envelopes. An envelope is a JSON object with "system", "module", "method",
// "uniqueid" and "payload", the sender's "source_system" and "source_module", "reference_uniqueid" in an
// answer, and "type".
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/json/Json.h"

namespace host {

constexpr const char* kSystem = "CobalixNative";
constexpr const char* kModule = "Gallery";
constexpr const char* kSourceSystem = "Host";
constexpr const char* kSourceModule = "gallery-host";

constexpr int kOrdinary = 3072;
constexpr int kPersistent = 3073;  // a subscription, and each notification for it

// The methods of the gallery's notifications.
const std::vector<std::string>& NotificationMethods();

// A random identifier, for example "3f0c9a52-6a0f-4d35-9a3b-0d1f9f2f6f11".
std::string NewUniqueId();

// False, with the reason in `error`, when the text is not one JSON object.
bool ParseObject(std::string_view text, KXP::Document& document, std::string& error);

// Adds the required fields that are missing and changes nothing else: the plug-in refuses wrong fields
// itself.
void Complete(KXP::Document& envelope);
// A complete envelope around a payload.
KXP::Document MakeRequest(const std::string& method, const KXP::Value& payload, int type = kOrdinary);

// An object of strings, like most payloads.
KXP::Document MakeTexts(std::initializer_list<std::pair<const char*, std::string>> members);
void AddText(KXP::Document& object, const char* key, const std::string& text);
// The same for a member that may exist already.
void SetText(KXP::Document& object, const char* key, const std::string& text);

// The member; null if there is none, or if the value is not an object.
const KXP::Value* Find(const KXP::Value& object, const char* key);
// A member that is a string, else an empty string.
std::string Text(const KXP::Value& object, const char* key);
// The elements of a member that is an array, else of an empty one.
KXP::Value::ConstArray Elements(const KXP::Value& object, const char* key);
// Whether "reference_uniqueid" is a string that is not empty.
bool IsResponse(const KXP::Document& envelope);
bool IsPersistent(const KXP::Document& envelope);
// Both: what the plug-in sends to subscribers. A subscription of the plug-in itself is not a response.
bool IsNotification(const KXP::Document& envelope);
// The payload, or an empty object.
const KXP::Value& Payload(const KXP::Document& envelope);

// The result in a response, or 0 if there is none.
int32_t ResultCode(const KXP::Document& envelope);
// "0x80070057: Some text".
std::string ResultText(const KXP::Document& envelope);

std::string ToText(const KXP::Value& value);        // on one line
std::string ToPrettyText(const KXP::Value& value);  // indented by two spaces

}  // namespace host
