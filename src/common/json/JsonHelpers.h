// Typed access to JSON values, in pairs: a required form that throws JSONFieldError (code 0x8008F001) and an
// optional form that falls back to a default. An optional member of the wrong type counts as missing, with
// nothing logged. Nothing converts between strings and numbers. Accessors only read, so any number of threads
// may use a value at the same time while nobody writes it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/json/Json.h"
#include "common/results/Exception.h"

namespace KXP {

// Reads a UTF-8 file with comments allowed and an object at its root. False when the file cannot be opened,
// which is not logged: a file may be optional. False with a log line when the text is wrong; `document` is
// then not to be used. A byte-order mark is wrong text here; JSONFile is the reader that knows them.
bool ReadJSON(const std::string& path, Document& document);

// Replaces `copy` by a deep copy, with the memory of its own allocator. RapidJSON's CopyFrom and the
// constructor of its kind build their copy in memory that may be null.
void CopyJSON(const Value& value, Document& copy);

// A value that points to a text, which must outlive it.
inline Value ReferTo(std::string_view text) {
    return Value(rapidjson::StringRef(text.data(), static_cast<rapidjson::SizeType>(text.size())));
}

// Compact text, which ends at the first zero byte that it would hold.
std::string WriteJSONToString(const Value& value);

// The names of an object's members and of the objects in it, for log lines that must not show values, for
// example "{a,b{c}}". Arrays are not entered. Empty for what is no object.
std::string WriteJSONToKeys(const Value& value);

// The member, or null. Logs when `value` is no object; throws when `required` and there is none. Of members
// with the same name the first counts.
const Value* jsonFindMember(const Value& value, std::string_view key, bool required);

inline bool jsonObjectHasKey(const Value& value, std::string_view key, bool required) {
    return jsonFindMember(value, key, required) != nullptr;
}

// Whether the value is a T, and the value as that T. Instantiated for bool, int, unsigned int, long long,
// unsigned long long, double (any number), const char* (points into the value) and std::string.
template <typename T>
bool jsonTypeMatch(const Value& value);
template <typename T>
T jsonGetType(const Value& value);

template <>
bool jsonTypeMatch<bool>(const Value& value);
template <>
bool jsonTypeMatch<int>(const Value& value);
template <>
bool jsonTypeMatch<unsigned int>(const Value& value);
template <>
bool jsonTypeMatch<long long>(const Value& value);
template <>
bool jsonTypeMatch<unsigned long long>(const Value& value);
template <>
bool jsonTypeMatch<double>(const Value& value);
template <>
bool jsonTypeMatch<const char*>(const Value& value);
template <>
bool jsonTypeMatch<std::string>(const Value& value);
template <>
bool jsonGetType<bool>(const Value& value);
template <>
int jsonGetType<int>(const Value& value);
template <>
unsigned int jsonGetType<unsigned int>(const Value& value);
template <>
long long jsonGetType<long long>(const Value& value);
template <>
unsigned long long jsonGetType<unsigned long long>(const Value& value);
template <>
double jsonGetType<double>(const Value& value);
template <>
const char* jsonGetType<const char*>(const Value& value);
template <>
std::string jsonGetType<std::string>(const Value& value);

// The word for a value's type in complaints: "Null", "Bool", "Object", "Array", "String" or "Number".
const char* JsonTypeName(const Value& value);

// "Found key 'key', with unexpected type: Number"
std::string jsonUnexpectedType(const Value& member, std::string_view key);

template <typename T>
T jsonGetValueOrDefault_impl(const Value& value, std::string_view key, T fallback, bool required) {
    const Value* member = jsonFindMember(value, key, required);
    if (!member) return fallback;
    if (jsonTypeMatch<T>(*member)) return jsonGetType<T>(*member);
    if (required) throw JSONFieldError(jsonUnexpectedType(*member, key));
    return fallback;
}

template <typename T>
T jsonGetValue(const Value& value, std::string_view key) {
    return jsonGetValueOrDefault_impl<T>(value, key, T{}, true);
}

template <typename T>
T jsonGetValueOrDefault(const Value& value, std::string_view key, T fallback) {
    return jsonGetValueOrDefault_impl<T>(value, key, std::move(fallback), false);
}

// A mask of 32 bits, which may be sent signed, so that its highest bit makes it negative, or unsigned. 0 when
// it is missing.
inline uint32_t jsonGetMaskOrZero(const Value& value, std::string_view key) {
    const auto asSigned = static_cast<uint32_t>(jsonGetValueOrDefault<int>(value, key, 0));
    return jsonGetValueOrDefault<unsigned int>(value, key, asSigned);
}

// Enums travel as words, matched by case. An optional word that the map does not know means the default: a
// newer client may send words that this one does not know.
template <typename E>
E jsonGetEnumOrDefault_impl(const Value& value, std::string_view key, const std::map<std::string, E>& words,
                            E fallback, bool required) {
    const char* text = jsonGetValueOrDefault_impl<const char*>(value, key, "", required);
    const auto found = words.find(text);
    if (found != words.end()) return found->second;
    if (!required) return fallback;
    throw JSONFieldError("Found a string at key '" + std::string(key) + "' with value '" + text +
                         "', but cannot map that to an enum value");
}

template <typename E>
E jsonGetEnum(const Value& value, std::string_view key, const std::map<std::string, E>& words) {
    return jsonGetEnumOrDefault_impl<E>(value, key, words, E{}, true);
}

template <typename E>
E jsonGetEnumOrDefault(const Value& value, std::string_view key, const std::map<std::string, E>& words,
                       E fallback) {
    return jsonGetEnumOrDefault_impl<E>(value, key, words, fallback, false);
}

// The member as it stands, or for the second forms a shared empty value that nobody writes. A member of the
// wrong type is logged in either form.
const Value& JSONGetArray(const Value& value, std::string_view key);
const Value& JSONGetArrayOrEmpty(const Value& value, std::string_view key);
const Value& JSONGetObject(const Value& value, std::string_view key);
const Value& JSONGetObjectOrEmpty(const Value& value, std::string_view key);

// The strings of an array; what else it holds is logged and skipped. Empty when there is no array.
std::vector<std::string> JSONGetStrings(const Value& value, std::string_view key);

std::wstring JSONGetStrW(const Value& value, std::string_view key);
std::wstring JSONGetStrWOrDefault(const Value& value, std::string_view key, const char* fallback);

}  // namespace KXP
