#include "plugin-modules/Gallery/src/activity/ActivityData.h"

#include "common/json/JsonHelpers.h"

using KXP::Allocator;
using KXP::Value;

namespace {

struct TextField {
    const char* key;
    std::optional<std::string> ActivityData::*member;
};

constexpr TextField kTexts[] = {
    {"gameName", &ActivityData::gameName}, {"playStarted", &ActivityData::playStarted},
    {"playTime", &ActivityData::playTime}, {"startTime", &ActivityData::startTime},
    {"endTime", &ActivityData::endTime},   {"mapFileName", &ActivityData::mapFileName},
    {"metaData", &ActivityData::metaData},
};

template <typename T>
std::optional<T> Optional(const Value& object, const char* key) {
    const Value* member = KXP::jsonFindMember(object, key, false);
    if (!member || !KXP::jsonTypeMatch<T>(*member)) return std::nullopt;
    return KXP::jsonGetType<T>(*member);
}

ActivityEvent ParseEvent(const Value& event) {
    return {KXP::jsonGetValue<std::string>(event, "time"), KXP::jsonGetValue<std::string>(event, "name"),
            KXP::jsonGetValue<std::string>(event, "info"), Optional<long long>(event, "round")};
}

ActivityRound ParseRound(const Value& round) {
    return {KXP::jsonGetValue<long long>(round, "number"), Optional<long long>(round, "score1"),
            Optional<long long>(round, "score2"), KXP::jsonGetValue<std::string>(round, "time")};
}

void AddText(Value& object, const char* key, const std::string& text, Allocator& allocator) {
    object.AddMember(rapidjson::StringRef(key), Value(text, allocator), allocator);
}

void AddNumber(Value& object, const char* key, const std::optional<int64_t>& number, Allocator& allocator) {
    if (number) object.AddMember(rapidjson::StringRef(key), Value(*number), allocator);
}

Value ValueOf(const ActivityEvent& event, Allocator& allocator) {
    Value object(rapidjson::kObjectType);
    AddText(object, "time", event.time, allocator);
    AddText(object, "name", event.name, allocator);
    AddText(object, "info", event.info, allocator);
    AddNumber(object, "round", event.round, allocator);
    return object;
}

Value ValueOf(const ActivityRound& round, Allocator& allocator) {
    Value object(rapidjson::kObjectType);
    AddNumber(object, "number", round.number, allocator);
    AddNumber(object, "score1", round.score1, allocator);
    AddNumber(object, "score2", round.score2, allocator);
    AddText(object, "time", round.time, allocator);
    return object;
}

template <typename T>
void AddList(Value& object, const char* key, const std::vector<T>& list, Allocator& allocator) {
    if (list.empty()) return;
    Value array(rapidjson::kArrayType);
    array.Reserve(static_cast<rapidjson::SizeType>(list.size()), allocator);
    for (const T& item : list)
        array.PushBack(ValueOf(item, allocator), allocator);
    object.AddMember(rapidjson::StringRef(key), array, allocator);
}

}  // namespace

ActivityData ActivityData::ParseActivityJSON(const Value& log) {
    if (!log.IsObject()) throw KXP::JSONFieldError("The log is no object");
    ActivityData data;
    for (const TextField& text : kTexts)
        data.*text.member = Optional<std::string>(log, text.key);
    data.session = Optional<long long>(log, "session");
    for (const Value& event : KXP::JSONGetArrayOrEmpty(log, "events").GetArray())
        data.events.push_back(ParseEvent(event));
    for (const Value& round : KXP::JSONGetArrayOrEmpty(log, "rounds").GetArray())
        data.rounds.push_back(ParseRound(round));
    return data;
}

void ActivityData::CreateActivityJSONValue(const ActivityData& data, Value& out, Allocator& allocator) {
    out.SetObject();
    for (const TextField& text : kTexts)
        if (data.*text.member) AddText(out, text.key, *(data.*text.member), allocator);
    AddNumber(out, "session", data.session, allocator);
    AddList(out, "events", data.events, allocator);
    AddList(out, "rounds", data.rounds, allocator);
}
