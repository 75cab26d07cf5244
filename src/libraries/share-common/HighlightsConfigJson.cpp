#include "libraries/share-common/HighlightsConfigJson.h"

#include <algorithm>

#include "CobalixUtil.h"
#include "common/JsonHelpers.h"

namespace {

constexpr const char* kHighlights = "highlights";
constexpr const char* kSignificance = "significance";
constexpr const char* kHighlightTags = "highlightTags";
constexpr const char* kUserInterest = "userInterest";
constexpr const char* kUserEnabled = "userEnabled";
constexpr const char* kName = "name";

// The strings of the root.
struct RootText {
    const char* key;
    std::string HighlightConfigData::*text;
};
constexpr RootText kRootTexts[] = {
    {"defaultLocale", &HighlightConfigData::defaultLocale},
    {"drsName", &HighlightConfigData::drsName},
    {"profileName", &HighlightConfigData::profileName},
    {"shortName", &HighlightConfigData::shortName},
};

// Unlike the accessors of JsonHelpers these log nothing.
template <typename T>
const KXP::Value* Member(const KXP::Value& object, const char* key) {
    const auto found = object.FindMember(key);
    return found != object.MemberEnd() && KXP::jsonTypeMatch<T>(found->value) ? &found->value : nullptr;
}

const KXP::Value* ObjectMember(const KXP::Value& object, const char* key) {
    const auto found = object.FindMember(key);
    return found != object.MemberEnd() && found->value.IsObject() ? &found->value : nullptr;
}

bool IsLocaleTable(const KXP::Value& table) {
    return std::all_of(table.MemberBegin(), table.MemberEnd(),
                       [](const auto& entry) { return entry.value.IsString(); });
}

bool validateHighlightDef(const KXP::Value& definition) {
    const KXP::Value* names = definition.IsObject() ? ObjectMember(definition, kName) : nullptr;
    if (!names || !IsLocaleTable(*names)) {
        KXP_LOG(KXP::LogFailure, "Bad locale table");
        return false;
    }
    if (!Member<bool>(definition, kUserInterest) || !Member<int>(definition, kSignificance) ||
        !Member<int>(definition, kHighlightTags)) {
        KXP_LOG(KXP::LogFailure, "Bad highlight definition");
        return false;
    }
    return true;
}

// The masks are signed in the file, where the highest bit makes them negative.
uint32_t ReadMask(const KXP::Value& definition, const char* key) {
    return static_cast<uint32_t>(definition[key].GetInt());
}

HighlightDefinition ReadDefinition(const std::string& id, const KXP::Value& value) {
    HighlightDefinition definition;
    definition.id = id;
    for (const auto& entry : value[kName].GetObject())
        definition.names.emplace(KXP::jsonGetType<std::string>(entry.name),
                                 KXP::jsonGetType<std::string>(entry.value));
    definition.userInterest = value[kUserInterest].GetBool();
    if (const KXP::Value* enabled = Member<bool>(value, kUserEnabled))
        definition.userEnabled = enabled->GetBool() ? 1 : 0;
    definition.highlightTags = ReadMask(value, kHighlightTags);
    definition.significance = ReadMask(value, kSignificance);
    return definition;
}

}  // namespace

bool ReadHighlightsConfig(const KXP::Value& root, HighlightConfigData& config) {
    const KXP::Value* highlights = root.IsObject() ? ObjectMember(root, kHighlights) : nullptr;
    if (!highlights) return false;
    HighlightConfigData read;
    for (const RootText& field : kRootTexts) {
        const KXP::Value* text = Member<std::string>(root, field.key);
        if (!text) return false;
        read.*field.text = KXP::jsonGetType<std::string>(*text);
    }
    for (const auto& member : highlights->GetObject()) {
        if (!validateHighlightDef(member.value)) {
            KXP_LOG(KXP::LogFailure, "Throwing out corrupt highlight definition");
            continue;
        }
        const std::string id = KXP::jsonGetType<std::string>(member.name);
        read.highlights.emplace(id, ReadDefinition(id, member.value));
    }
    config = std::move(read);
    return true;
}
