// Payloads against the schemas of the catalogue, and against a plain form of the keywords that it uses. The
// first line names a method and a kind, the rest is the payload.
#include <string>

#include "common/json/JsonParse.h"
#include "common/message/PayloadSchemas.h"
#include "fuzz/Plain.h"
#include "fuzz/QuietLog.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"

namespace {

using KXP::Value;

const KXP::Document& Api() {
    static const KXP::Document api = [] {
        KXP::Document document;
        plain::Demand(!KXP::ParseJSON(ApiCatalogueText(), document).IsError());
        return document;
    }();
    return api;
}

const Value& At(const Value& object, const std::string& key) {
    static const Value none(rapidjson::kObjectType);
    const auto member = object.FindMember(key);
    return member == object.MemberEnd() ? none : member->value;
}

bool IsOfType(const Value& value, const std::string& type) {
    if (type == "integer") return value.IsInt64() || value.IsUint64();
    if (type == "number") return value.IsNumber();
    if (type == "string") return value.IsString();
    if (type == "boolean") return value.IsBool();
    if (type == "array") return value.IsArray();
    return type == "object" && value.IsObject();
}

size_t Characters(const Value& text) {
    size_t count = 0;
    for (const char c : std::string_view(text.GetString(), text.GetStringLength()))
        count += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return count;
}

bool Fits(const Value& value, const Value& schema);

bool ObjectFits(const Value& object, const Value& schema) {
    if (schema.HasMember("required"))
        for (const Value& name : schema["required"].GetArray())
            if (!object.HasMember(name)) return false;
    for (const auto& member : object.GetObject()) {
        const Value& properties = At(schema, "properties");
        const auto found = properties.FindMember(member.name);
        if (found != properties.MemberEnd() && !Fits(member.value, found->value)) return false;
    }
    return true;
}

bool ArrayFits(const Value& array, const Value& schema) {
    if (schema.HasMember("minItems") && array.Size() < schema["minItems"].GetUint()) return false;
    for (const Value& element : array.GetArray())
        if (!Fits(element, At(schema, "items"))) return false;
    return true;
}

bool Fits(const Value& value, const Value& schema) {
    if (schema.HasMember("$ref")) {
        const std::string name = schema["$ref"].GetString();
        return Fits(value, At(At(Api(), "definitions"), name.substr(name.rfind('/') + 1)));
    }
    if (schema.HasMember("type") && !IsOfType(value, schema["type"].GetString())) return false;
    bool isNamed = !schema.HasMember("enum");
    if (!isNamed)
        for (const Value& each : schema["enum"].GetArray())
            isNamed |= each == value;
    if (!isNamed) return false;
    if (value.IsNumber() && schema.HasMember("minimum") && value.GetDouble() < schema["minimum"].GetDouble())
        return false;
    if (value.IsString() && schema.HasMember("minLength"))
        return Characters(value) >= schema["minLength"].GetUint();
    if (value.IsObject()) return ObjectFits(value, schema);
    return !value.IsArray() || ArrayFits(value, schema);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    static KXP::PayloadSchemas schemas(Api());
    const std::string text(reinterpret_cast<const char*>(data), size);
    const size_t space = std::min(text.find(' '), size);
    const size_t line = text.find('\n', space);
    KXP::Document payload;
    if (line == std::string::npos || KXP::ParseJSON(text.substr(line + 1), payload).IsError()) return 0;
    const std::string method = text.substr(0, space);
    const std::string kind = text.substr(space + 1, line - space - 1).c_str();
    const Value& schema = At(At(At(Api(), "definitions"), method), kind);
    if (!schema.IsObject()) return 0;
    plain::Demand(!schemas.Validate(method, payload, kind.c_str()).Failed() == Fits(payload, schema));
    return 0;
}
