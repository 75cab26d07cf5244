// Our way from text to a document, against the library's plain one: they differ only by our limits. Elements
// that are handed out one by one are those of the array.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "base/Text.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "fuzz/Plain.h"

namespace {

using KXP::Document;
using plain::Demand;

int Depth(const KXP::Value& value) {
    int depth = 0;
    if (value.IsObject())
        for (const auto& member : value.GetObject())
            depth = std::max(depth, Depth(member.value));
    if (value.IsArray())
        for (const auto& element : value.GetArray())
            depth = std::max(depth, Depth(element));
    return value.IsObject() || value.IsArray() ? depth + 1 : 0;
}

// Whether all strings are text and all numbers finite.
bool IsSound(const KXP::Value& value) {
    const auto isText = [](const KXP::Value& text) {
        return KXP::IsValidUtf8({text.GetString(), text.GetStringLength()});
    };
    bool all = value.IsString() ? isText(value) : !value.IsDouble() || !std::isinf(value.GetDouble());
    if (value.IsObject())
        for (const auto& member : value.GetObject())
            all = all && isText(member.name) && IsSound(member.value);
    if (value.IsArray())
        for (const auto& element : value.GetArray())
            all = all && IsSound(element);
    return all;
}

// Ten digits after an "e", wherever it stands.
bool MayHaveLongExponent(const std::string& text) {
    for (size_t at = text.find_first_of("eE"); at != std::string::npos;
         at = text.find_first_of("eE", at + 1)) {
        const size_t first = text.find_first_not_of("+-0", at + 1);
        if (first != std::string::npos &&
            std::min(text.find_first_not_of("0123456789", first), text.size()) - first > 9)
            return true;
    }
    return false;
}

void CheckElements(const std::string& text, const Document& whole) {
    std::vector<std::string> read;
    const KXP::ElementReader reader{
        "a", [&] { read.clear(); },
        [&](const KXP::Value& element) { read.push_back(KXP::WriteJSONToString(element)); }};
    Document rest;
    Demand(!KXP::ParseJSON(text, rest, &reader).IsError());
    std::vector<std::string> expected;
    if (whole.IsObject())
        if (const auto member = whole.FindMember("a");
            member != whole.MemberEnd() && member->value.IsArray()) {
            for (const auto& element : member->value.GetArray())
                expected.push_back(KXP::WriteJSONToString(element));
            Demand(rest["a"].Empty() && rest.MemberCount() == whole.MemberCount());
        }
    Demand(read == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    Document ours;
    const bool isOurs = !KXP::ParseJSON(text, ours).IsError();
    if (isOurs) CheckElements(text, ours);
    if (MayHaveLongExponent(text)) return 0;
    // Theirs may read beyond the end of what is no UTF-8.
    const std::string bytes = text.c_str() + std::string(KXP::kJsonTextSlack, '\0');
    const size_t mark = plain::StartsWith(bytes, "\xEF\xBB\xBF") ? 3 : 0;
    Document theirs;
    theirs.Parse<rapidjson::kParseCommentsFlag | rapidjson::kParseValidateEncodingFlag |
                 rapidjson::kParseIterativeFlag>(bytes.c_str() + mark);
    // Theirs makes no text of an escaped half of a pair, and infinity of a large number times a large power.
    const bool isTheirs = !theirs.HasParseError() && Depth(theirs) <= KXP::kMaxJsonDepth && IsSound(theirs);
    Demand(isOurs == isTheirs);
    Demand(!isOurs || KXP::WriteJSONToString(ours) == KXP::WriteJSONToString(theirs));
    return 0;
}
