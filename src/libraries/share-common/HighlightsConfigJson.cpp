#include "libraries/share-common/HighlightsConfigJson.h"

#include <algorithm>

#include "common/json/JsonHelpers.h"
#include "common/text/TextUtil.h"

namespace {

constexpr const char* kHighlights = "highlights";
constexpr const char* kSignificance = "significance";
constexpr const char* kHighlightTags = "highlightTags";
constexpr const char* kUserInterest = "userInterest";
constexpr const char* kUserEnabled = "userEnabled";
constexpr const char* kName = "name";

// The strings of the root, in the order of writing.
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

// Unlike the accessors of JsonHelpers these log nothing: a lock may be held.
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

bool validateHighlightDef(const KXP::Value& definition, KXP::HeldLog& log) {
    const KXP::Value* names = definition.IsObject() ? ObjectMember(definition, kName) : nullptr;
    if (!names || !IsLocaleTable(*names)) {
        log.Add(KXP::LogFailure, "Bad locale table");
        return false;
    }
    if (!Member<bool>(definition, kUserInterest) || !Member<int>(definition, kSignificance) ||
        !Member<int>(definition, kHighlightTags)) {
        log.Add(KXP::LogFailure, "Bad highlight definition");
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

KXP::Value Text(const std::string& text, KXP::Allocator& allocator) {
    return {text, allocator};
}

KXP::Value NamesValue(const HighlightDefinition& definition, KXP::Allocator& allocator) {
    // Two locales may become one.
    std::map<std::string, std::string> names;
    for (const auto& [locale, name] : definition.names)
        names.emplace(KXP::ToLower(locale), name);
    KXP::Value value(rapidjson::kObjectType);
    for (const auto& [locale, name] : names)
        value.AddMember(Text(locale, allocator), Text(name, allocator), allocator);
    return value;
}

KXP::Value DefinitionValue(const HighlightDefinition& definition, KXP::Allocator& allocator) {
    KXP::Value value(rapidjson::kObjectType);
    const auto addMask = [&](const char* key, uint32_t mask) {
        value.AddMember(rapidjson::StringRef(key), static_cast<int32_t>(mask), allocator);
    };
    addMask(kSignificance, definition.significance);
    addMask(kHighlightTags, definition.highlightTags);
    value.AddMember(rapidjson::StringRef(kUserInterest), definition.userInterest, allocator);
    if (definition.userEnabled != -1)
        value.AddMember(rapidjson::StringRef(kUserEnabled), definition.userEnabled == 1, allocator);
    value.AddMember(rapidjson::StringRef(kName), NamesValue(definition, allocator), allocator);
    return value;
}

}  // namespace

bool ReadHighlightsConfig(const KXP::Value& root, HighlightConfigData& config, KXP::HeldLog& log) {
    const KXP::Value* highlights = root.IsObject() ? ObjectMember(root, kHighlights) : nullptr;
    if (!highlights) return false;
    HighlightConfigData read;
    for (const RootText& field : kRootTexts) {
        const KXP::Value* text = Member<std::string>(root, field.key);
        if (!text) return false;
        read.*field.text = KXP::jsonGetType<std::string>(*text);
    }
    for (const auto& member : highlights->GetObject()) {
        if (!validateHighlightDef(member.value, log)) {
            log.Add(KXP::LogFailure, "Throwing out corrupt highlight definition");
            continue;
        }
        const std::string id = KXP::jsonGetType<std::string>(member.name);
        read.highlights.emplace(id, ReadDefinition(id, member.value));
    }
    config = std::move(read);
    return true;
}

void WriteHighlightsConfig(const HighlightConfigData& config, KXP::Document& document) {
    KXP::Allocator& allocator = document.GetAllocator();
    KXP::Value highlights(rapidjson::kObjectType);
    for (const auto& [id, definition] : config.highlights)
        highlights.AddMember(Text(id, allocator), DefinitionValue(definition, allocator), allocator);
    document.SetObject();
    document.AddMember(rapidjson::StringRef(kHighlights), highlights, allocator);
    for (const RootText& field : kRootTexts)
        document.AddMember(rapidjson::StringRef(field.key), Text(config.*field.text, allocator), allocator);
}
