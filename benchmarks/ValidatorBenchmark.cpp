// What the check of a payload costs with its schema kept, with it recompiled for each message, and with it
// compiled anew over the whole catalogue.
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>

#include "common/json/JsonParse.h"
#include "common/message/PayloadSchemas.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"

namespace {

using KXP::Document;
using KXP::PayloadSchemas;

Document Parsed(std::string_view text) {
    Document document;
    if (KXP::ParseJSON(text, document).IsError()) throw std::invalid_argument("benchmark payload");
    return document;
}

// "[element,element,...]"
std::string ArrayOf(int count, const std::string& element) {
    std::string text = "[";
    for (int i = 0; i < count; ++i)
        text += (i == 0 ? "" : ",") + element;
    return text + "]";
}

struct Message {
    const char* method;
    const char* kind;
    Document payload;
};

Message MontageRequest() {
    const std::string inputs = ArrayOf(50, R"({"details":{"path":"/gallery/game/clip.mp4","duration":15000,
        "width":1920,"height":1080,"highlightType":"kill","filter":"none",
        "source":{"app":"game","method":"Highlight"},"transition":{"kind":"fade","speed":1.0},"cmsid":"100021711"},
        "inputFileType":"video","edgeLog":"/gallery/game/clip.log"})");
    return {"CreateMontageFromRecipe", "parameters",
            Parsed(R"({"recipe":"recipe.json","output":"/gallery/montage.mp4","storyboard":{
                "titleSequence":{"seqType":"titleBasic","seqDetails":{"txtTitle":"a","txtSubtitle":"b"}},
                "celebration":"none","brandZV":{"brandType":"brandSlideInOut","brandDetails":{"position":"atEnd"}}},
                "inputs":)" +
                   inputs + "}")};
}

Message ListingResponse() {
    const std::string files = ArrayOf(1000, R"({"name":"Game 2026.01.02 - 03.04.05.06.DVR.mp4","type":"video",
        "subtype":"Highlight","source":"OVS_SDK","thumbnail":"/cache/thumbnail.jpg"})");
    return {"GetFolderListing", "return", Parsed(R"({"directories":["a","b"],"files":)" + files + "}")};
}

void Kept(benchmark::State& state, Message (*make)()) {
    const Document api = Parsed(ApiCatalogueText());
    const Message message = make();
    PayloadSchemas schemas(api);
    for ([[maybe_unused]] auto _ : state) {
        if (schemas.Validate(message.method, message.payload, message.kind).Failed())
            state.SkipWithError("payload refused");
    }
}

void CompiledAnew(benchmark::State& state, Message (*make)()) {
    const Document api = Parsed(ApiCatalogueText());
    const Message message = make();
    for ([[maybe_unused]] auto _ : state) {
        PayloadSchemas schemas(api);
        if (schemas.Validate(message.method, message.payload, message.kind).Failed())
            state.SkipWithError("payload refused");
    }
}

void CompiledWhole(benchmark::State& state, Message (*make)()) {
    Document api = Parsed(ApiCatalogueText());
    const Message message = make();
    Document source;
    source.CopyFrom(api["definitions"][message.method][message.kind], source.GetAllocator());
    source.AddMember("definitions", api["definitions"], source.GetAllocator());
    for ([[maybe_unused]] auto _ : state) {
        const rapidjson::GenericSchemaDocument<KXP::Value, KXP::Allocator> schema(source);
        rapidjson::GenericSchemaValidator<rapidjson::GenericSchemaDocument<KXP::Value, KXP::Allocator>>
            validator(schema);
        if (!message.payload.Accept(validator)) state.SkipWithError("payload refused");
    }
}

BENCHMARK_CAPTURE(Kept, montage, MontageRequest);
BENCHMARK_CAPTURE(CompiledAnew, montage, MontageRequest);
BENCHMARK_CAPTURE(CompiledWhole, montage, MontageRequest);
BENCHMARK_CAPTURE(Kept, listing, ListingResponse);
BENCHMARK_CAPTURE(CompiledAnew, listing, ListingResponse);
BENCHMARK_CAPTURE(CompiledWhole, listing, ListingResponse);

}  // namespace
