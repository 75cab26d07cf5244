#include "common/json/JsonHelpers.h"

#include "CobalixUtil.h"
#include "base/ReadWrite.h"
#include "common/json/JsonParse.h"
#include "common/text/TextUtil.h"

namespace KXP {
namespace {

// Indexed by rapidjson::Type.
constexpr const char* kTypeNames[] = {"Null", "Bool", "Bool", "Object", "Array", "String", "Number"};

const Value& TypedMember(const Value& value, std::string_view key, rapidjson::Type type, const Value& empty,
                         bool required) {
    const Value* member = jsonFindMember(value, key, required);
    if (!member) return empty;
    if (member->GetType() == type) return *member;
    const std::string text = "Found object with key " + std::string(key) + ", with unexpected type " +
                             std::to_string(static_cast<int>(member->GetType()));
    KXP_LOG(LogFailure, "%s", text.c_str());
    if (required) throw JSONFieldError(text);
    return empty;
}

const Value& ArrayMember(const Value& value, std::string_view key, bool required) {
    static const Value empty(rapidjson::kArrayType);
    return TypedMember(value, key, rapidjson::kArrayType, empty, required);
}

const Value& ObjectMember(const Value& value, std::string_view key, bool required) {
    static const Value empty(rapidjson::kObjectType);
    return TypedMember(value, key, rapidjson::kObjectType, empty, required);
}

}  // namespace

bool ReadJSON(const std::string& path, Document& document) {
    const FileDescriptor file = OpenForRead(path);
    if (!file.IsOpen()) return false;
    FileBytes text;
    // No JSON begins with the first byte of a UTF-8 mark, which ParseJSON would skip.
    const bool parsed = ReadWhole(file, kMaxJsonFileBytes, text) && text.view().substr(0, 1) != "\xEF" &&
                        !ParseJSONInPlace(text.bytes.get(), text.size, document).IsError();
    if (!parsed) {
        KXP_LOG(LogFailure, "Error parsing JSON document %s", path.c_str());
        return false;
    }
    if (!document.IsObject()) {
        KXP_LOG(LogFailure, "Document at %s has no root object", path.c_str());
        return false;
    }
    return true;
}

void CopyJSON(const Value& value, Document& copy) {
    auto events = [&](Document& handler) { return value.Accept(handler); };
    copy.Populate(events);
}

std::string WriteJSONToString(const Value& value) {
    JsonBuffer buffer;
    JsonWriter writer(buffer);
    value.Accept(writer);
    return buffer.GetString();
}

std::string WriteJSONToKeys(const Value& value) {
    if (!value.IsObject()) return "";
    std::string text = "{";
    for (const auto& member : value.GetObject()) {
        text.append(member.name.GetString(), member.name.GetStringLength());
        text += WriteJSONToKeys(member.value);
        text += ',';
    }
    if (text.size() > 1) text.pop_back();
    return text + "}";
}

const Value* jsonFindMember(const Value& value, std::string_view key, bool required) {
    if (!value.IsObject()) {
        const std::string text =
            "Invalid object passed to JSONGetValueOrDefault. Desired key=" + std::string(key);
        KXP_LOG(LogFailure, "%s", text.c_str());
        if (required) throw JSONFieldError(text);
        return nullptr;
    }
    const Value name(rapidjson::StringRef(key.data(), key.size()));
    const auto found = value.FindMember(name);
    if (found != value.MemberEnd()) return &found->value;
    if (!required) return nullptr;
    const std::string text = "Missing mandatory field " + std::string(key);
    KXP_LOG(LogFailure, "%s", text.c_str());
    throw JSONFieldError(text);
}

template <>
bool jsonTypeMatch<bool>(const Value& value) {
    return value.IsBool();
}
template <>
bool jsonTypeMatch<int>(const Value& value) {
    return value.IsInt();
}
template <>
bool jsonTypeMatch<unsigned int>(const Value& value) {
    return value.IsUint();
}
template <>
bool jsonTypeMatch<long long>(const Value& value) {
    return value.IsInt64();
}
template <>
bool jsonTypeMatch<unsigned long long>(const Value& value) {
    return value.IsUint64();
}
template <>
bool jsonTypeMatch<double>(const Value& value) {
    return value.IsNumber();
}
template <>
bool jsonTypeMatch<const char*>(const Value& value) {
    return value.IsString();
}
template <>
bool jsonTypeMatch<std::string>(const Value& value) {
    return value.IsString();
}

template <>
bool jsonGetType<bool>(const Value& value) {
    return value.IsTrue();
}
template <>
int jsonGetType<int>(const Value& value) {
    return value.GetInt();
}
template <>
unsigned int jsonGetType<unsigned int>(const Value& value) {
    return value.GetUint();
}
template <>
long long jsonGetType<long long>(const Value& value) {
    return value.GetInt64();
}
template <>
unsigned long long jsonGetType<unsigned long long>(const Value& value) {
    return value.GetUint64();
}
template <>
double jsonGetType<double>(const Value& value) {
    return value.GetDouble();
}
template <>
const char* jsonGetType<const char*>(const Value& value) {
    return value.GetString();
}
template <>
std::string jsonGetType<std::string>(const Value& value) {
    return {value.GetString(), value.GetStringLength()};
}

const char* JsonTypeName(const Value& value) {
    return kTypeNames[value.GetType()];
}

std::string jsonUnexpectedType(const Value& member, std::string_view key) {
    return "Found key '" + std::string(key) + "', with unexpected type: " + JsonTypeName(member);
}

const Value& JSONGetArray(const Value& value, std::string_view key) {
    return ArrayMember(value, key, true);
}

const Value& JSONGetArrayOrEmpty(const Value& value, std::string_view key) {
    return ArrayMember(value, key, false);
}

const Value& JSONGetObject(const Value& value, std::string_view key) {
    return ObjectMember(value, key, true);
}

const Value& JSONGetObjectOrEmpty(const Value& value, std::string_view key) {
    return ObjectMember(value, key, false);
}

std::vector<std::string> JSONGetStrings(const Value& value, std::string_view key) {
    std::vector<std::string> strings;
    for (const Value& element : JSONGetArrayOrEmpty(value, key).GetArray()) {
        if (element.IsString()) {
            strings.push_back(jsonGetType<std::string>(element));
        } else {
            KXP_LOG(LogFailure, "Found non-string in array. Expected all strings in array %s",
                    std::string(key).c_str());
        }
    }
    return strings;
}

std::wstring JSONGetStrW(const Value& value, std::string_view key) {
    return Utf8ToWide(jsonGetValue<const char*>(value, key));
}

std::wstring JSONGetStrWOrDefault(const Value& value, std::string_view key, const char* fallback) {
    return Utf8ToWide(jsonGetValueOrDefault<const char*>(value, key, fallback));
}

}  // namespace KXP
