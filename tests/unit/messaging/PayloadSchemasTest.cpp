#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "common/JsonParse.h"
#include "common/message/PayloadSchemas.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"
#include "tests/support/LogCapture.h"

namespace {

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

// Something wrong in each of the types that the definitions share, wherever a method has it.
TEST_F(PayloadSchemasTest, SpeaksAsTheWholeCatalogueWouldAndLeavesItAlone) {
    const Document payloads =
        Parsed(R"([null,[],{},{"unknown":1},{"directory":""},{"file":"\u00e9","width":0},
        {"files":[{"type":"film"}],"directories":[1]},{"files":[{"subtype":"Exr"},{"source":"x"}]},
        {"audiotype":"x"},{"ugc":[{"id":1,"fileType":"film"}]},{"ugc":[{"id":"1"}]},
        {"recents":[{"fileSource":"Elsewhere","session":"x"}]},{"recents":[{"events":[{"round":"x"}]}]},
        {"recents":[{"rounds":[{"number":"1"}]}]},{"ugcDeleted":{"ugc":{"fileSubType":7}}},
        {"captureSaved":{"ugc":{"memeInfo":[]},"unannounced":0}},{"memeInfo":{"topBarText":1}},
        {"highlightCanceled":{"highlight":{"type":"film"}}},{"highlight":{"id":"1"}},
        {"settings":{"capacity":{"enabled":1}}},{"settings":{"trackerStatus":"?"}},{"settings":{"path":5}},
        {"capacity":{"usageMB":0.75}},{"galleryPathUpdateStatus":{"status":"?"}},
        {"app":{"profileName":5}},{"groupsInfo":[{"tags":"x"}]},{"group":{"significance":[]}},
        {"inputs":[{"inputFileType":"?"}]},{"storyboard":{"brandZV":{"brandType":7}}},
        {"montageConfig":{"filters":[{"id":1}]}}])");
    Document api = Parsed(ApiCatalogueText());
    const size_t before = api.GetAllocator().Size();
    PayloadSchemas schemas(api);
    const Value& definitions = catalogue_["definitions"];
    std::set<std::string> failures;
    for (const auto& [name, definition] : definitions.GetObject()) {
        for (const char* kind : kKinds) {
            if (!definition.HasMember(kind)) continue;
            const WholeSchema whole(definition[kind], definitions);
            for (const Value& payload : payloads.GetArray()) {
                const RetVal result = schemas.Validate(name.GetString(), payload, kind);
                ASSERT_EQ(whole.FailureText(payload, kind), result.text) << name.GetString();
                ASSERT_EQ(result.text != "Success", result.Failed());
                failures.insert(result.text);
            }
        }
    }
    std::string all;
    for (const std::string& failure : failures)
        all += failure;
    for (const auto& [name, definition] : definitions.GetObject()) {
        const std::string reference = std::string("#/definitions/") + name.GetString();
        EXPECT_EQ(all.find(reference) != std::string::npos,
                  std::string(ApiCatalogueText()).find(reference + "\"") != std::string::npos)
            << name.GetString();
    }
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

// What the JSON library would end the program for is an exception, and so a failed check.
TEST_F(PayloadSchemasTest, OneBrokenSchemaHurtsNoOther) {
    const Document api = Parsed(R"({"definitions":{"Broken":{"parameters":{"properties":
        {"a":{"patternProperties":3}}}},"Whole":{"parameters":{"properties":{"a":{"type":"string"}}}}}})");
    PayloadSchemas schemas(api);
    for (int round = 1; round <= 2; ++round) {
        EXPECT_EQ(static_cast<int32_t>(0x8000FFFF),
                  schemas.Validate("Broken", Parsed("{}"), "parameters").code);
        EXPECT_EQ(round, log_.Count("message for method Broken: 0x8000ffff"));
        EXPECT_TRUE(schemas.Validate("Whole", Parsed(R"({"a":1})"), "parameters").Failed());
    }
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
