#include <algorithm>

#include "common/json/JsonParse.h"
#include "common/json/StackDocument.h"
#include "fuzz/Plain.h"
#include "plugin-modules/Gallery/src/media/Mp4Walk.h"

namespace {

using plain::At;
using plain::Big;

constexpr auto kFailure = static_cast<int32_t>(0x80004005);
constexpr auto kInvalidData = static_cast<int32_t>(0x8007000D);

// The source of the block, empty for any but ours.
std::string SourceOf(std::string_view text) {
    KXP::StackDocument block;
    if (KXP::ParseJSON(text, *block).IsError() || !(*block).IsObject()) return "";
    const auto source = (*block).FindMember("Source");
    if (source == (*block).MemberEnd() || !source->value.IsString()) return "";
    const std::string name(source->value.GetString(), source->value.GetStringLength());
    if (name == "Ovirastream SDK") return "OVS_SDK";
    return name == "Ovirastream SHARE" ? "OVS_Share" : "";
}

struct Outcome {
    int32_t code = 1;
    bool isFault = false;  // with a line for the log
    std::string source;
};

Outcome Walk(std::string_view file) {
    bool inMovie = false;
    bool inUserData = false;
    for (uint64_t at = 0;;) {
        const std::string_view header = At(file, at, 8);
        if (header.size() < 8) return {};
        at += 8;
        uint64_t size = Big(header.substr(0, 4));
        bool isShort = false;
        if (size == 1) {
            std::string number(At(file, at, 8));
            if (number.empty()) return {kFailure, true, ""};
            isShort = number.size() < 8;
            at += number.size();
            number.resize(8);
            size = Big(number);
            if (size < 16) return {1, true, ""};
            size -= 16;
        } else if (size < 8) {
            return {size == 0 ? 1 : kInvalidData, true, ""};
        } else {
            size -= 8;
        }
        const std::string_view type = header.substr(4);
        if (type == "moov" && !std::exchange(inMovie, true)) size = 0;
        if (type == "udta" && !std::exchange(inUserData, true)) size = 0;
        std::string source;
        if (type == "tagc") {
            const uint64_t wanted = std::min<uint64_t>(size, 4096);
            const std::string_view text = At(file, at, wanted);
            if (text.empty()) return {kFailure, true, ""};
            isShort = isShort || text.size() < wanted;
            at += text.size();
            source = SourceOf(text);
        }
        if (isShort) return {kInvalidData, false, source};
        if (!source.empty()) return {1, false, source};
        at = size > UINT64_MAX - at ? UINT64_MAX : at + size;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    media::MemorySource source(file);
    media::ByteCursor cursor(source);
    media::SniffResult result;
    const int32_t code = media::WalkMp4(cursor, result);
    const Outcome expected = Walk(file);
    plain::Demand(code == expected.code && result.findings.empty() != expected.isFault);
    plain::Demand(result.isOwn != expected.source.empty() && result.fileSource == expected.source);
    return 0;
}
