#include "common/message/PayloadSchemas.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "CobalixUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "common/json/ValidatorMemory.h"
#include "common/results/Exception.h"

namespace KXP {
namespace {

using SchemaDocument = rapidjson::GenericSchemaDocument<Value, Allocator>;
using Names = std::set<std::string_view>;

constexpr std::string_view kReferencePrefix = "#/definitions/";

std::string_view TextOf(const Value& text) {
    return {text.GetString(), text.GetStringLength()};
}

// The definition that a member named "$ref" refers to; empty for every other member.
std::string_view ReferredName(const Value::Member& member) {
    if (TextOf(member.name) != "$ref" || !member.value.IsString()) return {};
    const std::string_view reference = TextOf(member.value);
    if (reference.substr(0, kReferencePrefix.size()) != kReferencePrefix) return {};
    return reference.substr(kReferencePrefix.size());
}

// Adds the names of the definitions that `schema` refers to, and of those that they refer to in turn.
void CollectReached(const Value& schema, const Value& definitions, Names& reached) {
    if (schema.IsArray()) {
        for (const Value& element : schema.GetArray())
            CollectReached(element, definitions, reached);
    }
    if (!schema.IsObject()) return;
    for (const Value::Member& member : schema.GetObject()) {
        CollectReached(member.value, definitions, reached);
        const std::string_view name = ReferredName(member);
        if (!name.empty() && reached.insert(name).second)
            CollectReached(JSONGetObjectOrEmpty(definitions, name), definitions, reached);
    }
}

// `schema` with the definitions that it reaches beside its own members: failure texts name places in the
// schema, which must read as if the whole catalogue stood here.
Document SchemaWithDefinitions(const Value& schema, const Value& definitions) {
    Names reached;
    CollectReached(schema, definitions, reached);
    Document document;
    Allocator& allocator = document.GetAllocator();
    CopyJSON(schema, document);
    Value kept(rapidjson::kObjectType);
    for (const Value::Member& member : definitions.GetObject()) {
        if (reached.count(TextOf(member.name)) == 0) continue;
        Document definition(&allocator);
        CopyJSON(member.value, definition);
        kept.AddMember(Value(member.name, allocator), definition, allocator);
    }
    document.AddMember("definitions", kept, allocator);
    return document;
}

template <typename Output>
using BaseValidator = rapidjson::GenericSchemaValidator<SchemaDocument, Output, ValidatorMemory>;

// A base, so that it is there before the validator and after it.
struct WithMemory {
    ValidatorMemory memory;
};

// RapidJSON converts every number that it compares with an enum to a 64-bit integer, which is undefined for
// one that does not fit. Numbers beyond that range equal none of the schema's before and after they are
// bounded.
template <typename Output>
class PayloadValidator : private WithMemory, public BaseValidator<Output> {
  public:
    template <typename... Outputs>
    explicit PayloadValidator(const SchemaDocument& schema, Outputs&... output)
        : BaseValidator<Output>(schema, output..., &memory) {}

    bool Double(double number) {
        constexpr double kLeast = -0x1p63;
        constexpr double kGreatest = 0x1.fffffffffffffp63;
        return BaseValidator<Output>::Double(std::clamp(number, kLeast, kGreatest));
    }
};

std::string UriFragment(const SchemaDocument::PointerType& pointer) {
    JsonBuffer text;
    pointer.StringifyUriFragment(text);
    return {text.GetString(), text.GetSize()};
}

template <typename Validator>
void ThrowIfInvalid(const Validator& validator, const char* kind) {
    if (validator.IsValid()) return;
    const char* keyword = validator.GetInvalidSchemaKeyword();
    throw JSONFieldError(std::string("Schema '") + kind + "' validation error. Problem found at key " +
                         UriFragment(validator.GetInvalidDocumentPointer()) +
                         ". Schema violated: " + UriFragment(validator.GetInvalidSchemaPointer()) +
                         ". Violation: " + (keyword ? keyword : ""));
}

RetVal LogInvalid(const std::exception& error, const std::string& method, const Value& payload) {
    RetVal failure = ExceptionToRetVal();
    KXP_LOG(LogFailure, "Could not parse JSON message for method %s: %s, Returned fields: %s", method.c_str(),
            error.what(), WriteJSONToKeys(payload).c_str());
    return failure;
}

// A number that JSON does not know ends the text.
void ThrowUnlessComplete(const JsonWriter& writer) {
    if (!writer.IsComplete()) throw Exception(Code::kFailure, "Error encoding JSON string", 0);
}

void WriteUnchecked(const BodySource& body, JsonBuffer& text) {
    text.Clear();
    JsonWriter writer(text);
    JsonSink<JsonWriter> sink(writer);
    body(sink);
    ThrowUnlessComplete(writer);
}

}  // namespace

struct PayloadSchemas::Compiled {
    explicit Compiled(const Document& source) : memory(kChunkBytes), schema(source, nullptr, &memory) {}

    static constexpr size_t kChunkBytes = 4096;
    // Before the schema, which lies in it: one that fails half made leaves no memory allocated.
    Allocator memory;
    SchemaDocument schema;
};

PayloadSchemas::PayloadSchemas(const Document& api) : api_(api) {}

PayloadSchemas::~PayloadSchemas() = default;

RetVal PayloadSchemas::Validate(const std::string& method, const Value& payload, const char* kind) {
    try {
        if (const Compiled* const compiled = Find(method, kind)) {
            PayloadValidator<rapidjson::BaseReaderHandler<Utf8>> validator(compiled->schema);
            payload.Accept(validator);
            ThrowIfInvalid(validator, kind);
        }
        return {};
    } catch (const std::exception& error) {
        return LogInvalid(error, method, payload);
    }
}

RetVal PayloadSchemas::WriteChecked(const std::string& method, const BodySource& body, JsonBuffer& text) {
    try {
        const Compiled* const compiled = Find(method, "return");
        if (!compiled) {
            WriteUnchecked(body, text);
            return {};
        }
        JsonWriter writer(text);
        PayloadValidator<JsonWriter> validator(compiled->schema, writer);
        JsonSink<PayloadValidator<JsonWriter>> sink(validator);
        body(sink);
        ThrowIfInvalid(validator, "return");
        ThrowUnlessComplete(writer);
        return {};
    } catch (const JSONFieldError& error) {
        WriteUnchecked(body, text);
        Document document;
        (void)ParseJSON({text.GetString(), text.GetSize()}, document);
        return LogInvalid(error, method, document);
    }
}

// The catalogue is long, and each message asks for two of its definitions.
const Value& PayloadSchemas::Definition(const std::string& method) {
    std::call_once(indexed_, [this] {
        for (const Value::Member& member : JSONGetObjectOrEmpty(api_, "definitions").GetObject())
            definitions_.emplace(TextOf(member.name), &member.value);
    });
    static const Value none(rapidjson::kObjectType);
    const auto found = definitions_.find(method);
    return found != definitions_.end() ? *found->second : none;
}

// Compiles with the mutex free, because that may log. Threads that need a schema at the same time each
// compile it, and one of the results is kept.
const PayloadSchemas::Compiled* PayloadSchemas::Find(const std::string& method, const char* kind) {
    const Value& schema = JSONGetObjectOrEmpty(Definition(method), kind);
    if (schema.ObjectEmpty()) return nullptr;
    {
        MutexLock lock(mutex_);
        const auto found = compiled_.find(&schema);
        if (found != compiled_.end()) return found->second.get();
    }
    const Value& definitions = JSONGetObjectOrEmpty(api_, "definitions");
    auto fresh = std::make_unique<const Compiled>(SchemaWithDefinitions(schema, definitions));
    MutexLock lock(mutex_);
    return compiled_.try_emplace(&schema, std::move(fresh)).first->second.get();
}

}  // namespace KXP
