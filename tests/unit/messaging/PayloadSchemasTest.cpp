#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "common/JsonParse.h"
#include "common/message/PayloadSchemas.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"
#include "tests/support/LogCapture.h"

namespace {

using KXP::Allocator;
using KXP::Document;
using KXP::PayloadSchemas;
using KXP::RetVal;
using KXP::Value;

constexpr std::array<const char*, 2> kKinds = {"parameters", "return"};

Document Parsed(std::string_view text) {
    Document document;
    EXPECT_FALSE(KXP::ParseJSON(text, document).IsError()) << text;
    return document;
}

class PayloadSchemasTest : public testing::Test {
  protected:
    LogCapture log_;
    const Document catalogue_ = Parsed(ApiCatalogueText());
};

// The same check with nothing kept and nothing left out: compiled over all the definitions.
class WholeSchema {
  public:
    WholeSchema(const Value& schema, const Value& definitions) {
        source_.CopyFrom(schema, source_.GetAllocator());
        source_.AddMember("definitions", Value(definitions, source_.GetAllocator()), source_.GetAllocator());
        compiled_ = std::make_unique<rapidjson::GenericSchemaDocument<KXP::Value, KXP::Allocator>>(source_);
    }

    std::string FailureText(const Value& payload, const char* kind) const {
        rapidjson::GenericSchemaValidator<rapidjson::GenericSchemaDocument<KXP::Value, KXP::Allocator>>
            validator(*compiled_);
        if (payload.Accept(validator)) return "Success";
        KXP::JsonBuffer place;
        KXP::JsonBuffer violated;
        validator.GetInvalidDocumentPointer().StringifyUriFragment(place);
        validator.GetInvalidSchemaPointer().StringifyUriFragment(violated);
        return std::string("Schema '") + kind + "' validation error. Problem found at key " +
               place.GetString() + ". Schema violated: " + violated.GetString() +
               ". Violation: " + validator.GetInvalidSchemaKeyword();
    }

  private:
    Document source_;
    std::unique_ptr<rapidjson::GenericSchemaDocument<KXP::Value, KXP::Allocator>> compiled_;
};

// A payload that has every field that the schema names, and passes but for fields that it does not declare.
Value Sample(const Value& schema, const Value& definitions, Allocator& allocator) {
    if (schema.HasMember("$ref")) {
        const std::string reference = schema["$ref"].GetString();
        return Sample(definitions[reference.substr(reference.rfind('/') + 1)], definitions, allocator);
    }
    if (schema.HasMember("enum")) return Value(schema["enum"][0], allocator);
    const std::string type = schema["type"].GetString();
    if (type == "string") return Value("text");
    if (type == "boolean") return Value(true);
    if (type == "integer" || type == "number") return Value(7);
    if (type == "array") {
        Value array(rapidjson::kArrayType);
        array.PushBack(Sample(schema["items"], definitions, allocator), allocator);
        return array;
    }
    Value object(rapidjson::kObjectType);
    if (schema.HasMember("properties")) {
        for (const auto& [name, property] : schema["properties"].GetObject())
            object.AddMember(Value(name, allocator), Sample(property, definitions, allocator), allocator);
    }
    return object;
}

void CollectPlaces(const Value& value, const KXP::JsonPointer& place, std::vector<KXP::JsonPointer>& all) {
    all.push_back(place);
    if (value.IsObject()) {
        for (const auto& [name, member] : value.GetObject())
            CollectPlaces(member, place.Append(name), all);
    } else if (value.IsArray()) {
        for (rapidjson::SizeType i = 0; i < value.Size(); ++i)
            CollectPlaces(value[i], place.Append(i), all);
    }
}

// The sample, and the sample with each of its places taken out or spoilt in turn.
std::vector<Document> SpoiltPayloads(const Value& sample) {
    static const Document spoils = Parsed(R"([null,true,-1,0,0.75,18446744073709551615,"","é",
                                             [],[3],{},{"unknown":1},{"settings":[{}]}])");
    std::vector<KXP::JsonPointer> places;
    CollectPlaces(sample, KXP::JsonPointer(), places);
    std::vector<Document> payloads(1);
    payloads[0].CopyFrom(sample, payloads[0].GetAllocator());
    for (const KXP::JsonPointer& place : places) {
        for (const Value& spoil : spoils.GetArray()) {
            Document& payload = payloads.emplace_back();
            payload.CopyFrom(sample, payload.GetAllocator());
            place.Set(payload, Value(spoil, payload.GetAllocator()));
        }
        Document& payload = payloads.emplace_back();
        payload.CopyFrom(sample, payload.GetAllocator());
        place.Erase(payload);
    }
    return payloads;
}

TEST_F(PayloadSchemasTest, LogsNamesAndNoValues) {
    PayloadSchemas schemas(catalogue_);
    const Document payload = Parsed(R"({"directory":5,"secret":{"token":"abc"},"list":[{"x":1}],"e":{}})");
    const RetVal result = schemas.Validate("GetFolderCRC", payload, "parameters");
    EXPECT_EQ(static_cast<int32_t>(0x8008F001), result.code);
    EXPECT_TRUE(log_.HasLine(
        1,
        "Could not parse JSON message for method GetFolderCRC: 0x8008f001[0]: Schema 'parameters' validation "
        "error. Problem found at key #/directory. Schema violated: #/properties/directory. Violation: type, "
        "Returned fields: {directory,secret{token},list,e{}}"));
}

TEST_F(PayloadSchemasTest, PointersAreUriFragments) {
    const Document api = Parsed(R"({"definitions":{"M":{"parameters":{"properties":
        {"a b/c~é\"\u0000":{"items":{"type":"null"}}}}}}})");
    PayloadSchemas schemas(api);
    EXPECT_EQ(
        "Schema 'parameters' validation error. Problem found at key #/a%20b~1c~0%C3%A9%22%00/0. Schema "
        "violated: "
        "#/properties/a%20b~1c~0%C3%A9%22%00/items. Violation: type",
        schemas.Validate("M", Parsed(R"({"a b/c~é\"\u0000":[1]})"), "parameters").text);
}

TEST_F(PayloadSchemasTest, AcceptsWhatIsNotListed) {
    PayloadSchemas schemas(catalogue_);
    const Document payload = Parsed(R"([{"directory":5}])");
    for (const std::string& method :
         {std::string("Unheard"), std::string(), std::string("GetFolderCRC\0x", 14), std::string("UGC"),
          std::string("#/definitions/UGC"), std::string("CancelMontage"), std::string(100000, 'M')})
        EXPECT_FALSE(schemas.Validate(method, payload, "parameters").Failed()) << method.size();
    EXPECT_FALSE(schemas.Validate("SetSettings", payload, "return").Failed());
    for (const char* text : {"[]", R"({"definitions":[]})", R"({"definitions":{"M":1}})",
                             R"({"definitions":{"M":{"parameters":[]}}})"}) {
        const Document api = Parsed(text);
        EXPECT_FALSE(PayloadSchemas(api).Validate("M", payload, "parameters").Failed()) << text;
    }
}

TEST_F(PayloadSchemasTest, SpeaksAsTheWholeCatalogueWouldAndLeavesItAlone) {
    Document api = Parsed(ApiCatalogueText());
    const size_t before = api.GetAllocator().Size();
    PayloadSchemas schemas(api);
    const Value& definitions = catalogue_["definitions"];
    int kept = 0;
    int failures = 0;
    for (const auto& [name, definition] : definitions.GetObject()) {
        for (const char* kind : kKinds) {
            if (!definition.HasMember(kind)) continue;
            ++kept;
            const WholeSchema whole(definition[kind], definitions);
            Document memory;
            const Value sample = Sample(definition[kind], definitions, memory.GetAllocator());
            for (const Document& payload : SpoiltPayloads(sample)) {
                const RetVal result = schemas.Validate(name.GetString(), payload, kind);
                ASSERT_EQ(whole.FailureText(payload, kind), result.text) << name.GetString();
                ASSERT_EQ(result.text != "Success", result.Failed());
                if (result.Failed()) ++failures;
            }
        }
    }
    EXPECT_EQ(52, kept);
    EXPECT_GT(failures, 3000);
    EXPECT_EQ(before, api.GetAllocator().Size());
    EXPECT_TRUE(api == catalogue_);
}

TEST_F(PayloadSchemasTest, ComparesNumbersBeyondAnyInteger) {
    const Document api = Parsed(R"({"definitions":{"M":{"parameters":{
        "properties":{"speed":{"enum":[0.5,1.0,2.0]},"length":{"minimum":1}}}}}})");
    PayloadSchemas schemas(api);
    for (const char* wrong :
         {R"({"speed":1e300})", R"({"speed":18446744073709551616})", R"({"length":-1e300})"})
        EXPECT_TRUE(schemas.Validate("M", Parsed(wrong), "parameters").Failed()) << wrong;
    for (const char* right : {R"({"speed":1})", R"({"speed":0.5})", R"({"length":1e300})"})
        EXPECT_FALSE(schemas.Validate("M", Parsed(right), "parameters").Failed()) << right;
}

TEST_F(PayloadSchemasTest, OneBrokenSchemaHurtsNoOther) {
    const Document api = Parsed(R"({"definitions":{
        "Broken":{"parameters":{"properties":{"a":{"type":"string"},"b":{"patternProperties":3}}}},
        "Whole":{"parameters":{"properties":{"a":{"$ref":"#/definitions/Text"}}}},
        "Text":{"type":"string"}}})");
    PayloadSchemas schemas(api);
    for (int round = 0; round < 2; ++round) {
        const RetVal broken = schemas.Validate("Broken", Parsed("{}"), "parameters");
        EXPECT_EQ(static_cast<int32_t>(0x8000FFFF), broken.code);
        EXPECT_EQ(round + 1, log_.Count("message for method Broken: 0x8000ffff"));
        EXPECT_FALSE(schemas.Validate("Whole", Parsed(R"({"a":"b"})"), "parameters").Failed());
        EXPECT_TRUE(schemas.Validate("Whole", Parsed(R"({"a":1})"), "parameters").Failed());
    }
}

TEST_F(PayloadSchemasTest, DefinitionsMayReferToEachOtherInARing) {
    const Document api = Parsed(R"({"definitions":{
        "M":{"parameters":{"properties":{"tree":{"$ref":"#/definitions/Tree"}}}},
        "Tree":{"properties":{"nodes":{"items":{"$ref":"#/definitions/Node"}}}},
        "Node":{"properties":{"tree":{"$ref":"#/definitions/Tree"},"id":{"type":"integer"}}}}})");
    PayloadSchemas schemas(api);
    const RetVal result = schemas.Validate(
        "M", Parsed(R"({"tree":{"nodes":[{"id":1,"tree":{"nodes":[{"id":2},{"id":"3"}]}}]}})"), "parameters");
    EXPECT_EQ(
        "Schema 'parameters' validation error. Problem found at key #/tree/nodes/0/tree/nodes/1/id. Schema "
        "violated: #/definitions/Node/properties/id. Violation: type",
        result.text);
}

TEST_F(PayloadSchemasTest, WalksTheDeepestPayload) {
    PayloadSchemas schemas(catalogue_);
    const std::string text =
        R"({"extra":)" + std::string(511, '[') + std::string(511, ']') + R"(,"directory":"/a","x":1})";
    EXPECT_FALSE(schemas.Validate("GetFolderCRC", Parsed(text), "parameters").Failed());
}

TEST_F(PayloadSchemasTest, ThreadsCheckSideBySide) {
    PayloadSchemas schemas(catalogue_);
    const Document wrong = Parsed(R"({"file":1,"settings":{"capacity":7},"directory":"","inputs":[{}]})");
    std::atomic<int> ready{0};
    const auto check = [&](bool together) {
        ++ready;
        while (together && ready < 4)
            std::this_thread::yield();
        std::string texts;
        for (const auto& [name, definition] : catalogue_["definitions"].GetObject()) {
            for (const char* kind : kKinds)
                texts += schemas.Validate(name.GetString(), wrong, kind).text + "\n";
        }
        return texts;
    };
    std::array<std::future<std::string>, 4> threads;
    for (auto& thread : threads)
        thread = std::async(std::launch::async, check, true);
    std::array<std::string, 4> texts;
    std::transform(threads.begin(), threads.end(), texts.begin(), [](auto& thread) { return thread.get(); });
    const std::string alone = check(false);
    for (const std::string& text : texts)
        EXPECT_EQ(alone, text);
}

}  // namespace
