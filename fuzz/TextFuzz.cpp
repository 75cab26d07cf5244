// Text in every encoding, and what the host makes of it for a terminal.
#include <cstring>
#include <stdexcept>
#include <string>

#include "base/Text.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "fuzz/Plain.h"
#include "gallery-host/base/Printable.h"

namespace {

using plain::Demand;

// What a strict conversion there and back makes of a text; false when it refuses the text.
template <typename Text, typename Other>
bool Returns(const Text& text, Other (*there)(std::basic_string_view<typename Text::value_type>),
             Text (*back)(std::basic_string_view<typename Other::value_type>)) {
    try {
        Demand(back(there(text)) == text);
        return true;
    } catch (const std::range_error&) {
        return false;
    }
}

template <typename Text>
Text Units(const uint8_t* data, size_t size) {
    Text text(size / sizeof(typename Text::value_type), 0);
    std::memcpy(text.data(), data, text.size() * sizeof(typename Text::value_type));
    return text;
}

void CheckPrintable(const std::string& text) {
    const std::string line = host::Printable(text);
    Demand(KXP::IsValidUtf8(line) && host::Printable(line) == line &&
           host::DisplayWidth(line) <= line.size());
    for (const char c : line)
        Demand(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F);
    KXP::Document json;
    KXP::Document escaped;
    if (KXP::ParseJSON(text, json).IsError()) return;
    const std::string written = KXP::WriteJSONToString(json);
    Demand(!KXP::ParseJSON(host::PrintableJson(written), escaped).IsError());
    KXP::ParseJSON(written, json);
    Demand(json == escaped || KXP::WriteJSONToString(json) == KXP::WriteJSONToString(escaped));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const bool isValid = KXP::IsValidUtf8(text);
    Demand(isValid == host::IsUtf8(text));
    Demand(isValid == Returns(text, KXP::Utf8ToWide, KXP::WideToUtf8));
    Demand(isValid == Returns(text, KXP::Utf8ToUtf16LE, KXP::Utf16LEToUtf8));
    const std::string valid = KXP::ToValidUtf8(text);
    Demand(KXP::IsValidUtf8(valid) && (valid == text) == isValid);
    Returns(Units<std::wstring>(data, size), KXP::WideToUtf8, KXP::Utf8ToWide);
    Returns(Units<std::u16string>(data, size), KXP::Utf16LEToUtf8, KXP::Utf8ToUtf16LE);
    CheckPrintable(text);
    return 0;
}
