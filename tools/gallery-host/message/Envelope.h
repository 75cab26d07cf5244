// Making and reading message envelopes. An envelope is a JSON object with "system", "module", "method",
// "uniqueid" and "payload", the sender's "source_system" and "source_module", "reference_uniqueid" in an
// answer, and "type".
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/Json.h"

namespace host {

constexpr const char* kSystem = "CobalixNative";
constexpr const char* kModule = "Gallery";
constexpr const char* kSourceSystem = "Host";
constexpr const char* kSourceModule = "gallery-host";

constexpr int kOrdinary = 3072;
constexpr int kPersistent = 3073;  // a subscription, and every notification that comes of it

// What the gallery notifies of.
const std::vector<std::string>& NotificationMethods();

// A random identifier, for example "3f0c9a52-6a0f-4d35-9a3b-0d1f9f2f6f11".
std::string NewUniqueId();

// False with words for people in `error` when the text is not one JSON object.
bool ParseObject(std::string_view text, KXP::Document& document, std::string& error);

// Adds what is missing of the fields that every request needs, and touches nothing that is there: fields that
// are wrong are for the plug-in to refuse, in its own words.
void Complete(KXP::Document& envelope);
// A complete envelope around a payload.
KXP::Document MakeRequest(const std::string& method, const KXP::Value& payload, int type = kOrdinary);

// An object of texts, as most payloads are.
KXP::Document MakeTexts(std::initializer_list<std::pair<const char*, std::string>> members);
void AddText(KXP::Document& object, const char* key, const std::string& text);
// The same where the member may be there already.
void SetText(KXP::Document& object, const char* key, const std::string& text);

// The member, or null; null also in what is no object.
const KXP::Value* Find(const KXP::Value& object, const char* key);
// A member that is a string, else an empty text.
std::string Text(const KXP::Value& object, const char* key);
// The elements of a member that is an array, else of an empty one.
KXP::Value::ConstArray Elements(const KXP::Value& object, const char* key);
// "reference_uniqueid" is a text that is not empty.
bool IsResponse(const KXP::Document& envelope);
bool IsPersistent(const KXP::Document& envelope);
// Both of these: what the plug-in sends to subscribers. A subscription of its own is no response.
bool IsNotification(const KXP::Document& envelope);
// The payload, or an empty object.
const KXP::Value& Payload(const KXP::Document& envelope);

// The result that a response carries; without one it is 0.
int32_t ResultCode(const KXP::Document& envelope);
// "0x80070057: Some text".
std::string ResultText(const KXP::Document& envelope);

std::string ToText(const KXP::Value& value);        // on one line
std::string ToPrettyText(const KXP::Value& value);  // indented by two spaces

}  // namespace host
