#include "plugin-modules/Gallery/src/tracker/kept/KeptCapture.h"

#include <algorithm>
#include <iterator>

#include "plugin-modules/Gallery/src/tracker/kept/KeptFields.h"

namespace {

// Calls `visit` with each field and its typed member.
template <size_t count, typename Visit>
void ForEachMember(const KeptField (&fields)[count], Visit visit) {
    for (const KeptField& field : fields)
        std::visit([&](auto member) { visit(field, member); }, field.member);
}

template <size_t count>
bool AreEqual(const KeptField (&fields)[count], const KeptFacts& a, const KeptFacts& b) {
    return std::all_of(std::begin(fields), std::end(fields), [&](const KeptField& field) {
        return std::visit([&](auto member) { return a.*member.fact == b.*member.fact; }, field.member);
    });
}

bool IsSet(const SharedText& text) {
    return !text.empty();
}
bool IsSet(int32_t number) {
    return number != 0;
}

void Enter(const KeptFacts& facts, TrackedUGC& record, bool onlyFill) {
    const auto set = [&](const KeptField& field, auto member) {
        if (onlyFill && field.onlyFills && IsSet(record.*member.field)) return;
        record.*member.field = facts.*member.fact;
    };
    ForEachMember(kept_fields::kCaptions, set);
    if (facts.told) ForEachMember(kept_fields::kHighlight, set);
}

}  // namespace

bool KeptFacts::operator==(const KeptFacts& other) const {
    return told == other.told && AreEqual(kept_fields::kCaptions, *this, other) &&
           AreEqual(kept_fields::kHighlight, *this, other);
}

KeptFacts FactsOf(const TrackedUGC& record, bool told) {
    KeptFacts facts;
    const auto take = [&](const KeptField&, auto member) { facts.*member.fact = record.*member.field; };
    ForEachMember(kept_fields::kCaptions, take);
    facts.told = told;
    if (told) ForEachMember(kept_fields::kHighlight, take);
    return facts;
}

KeptFacts FactsOf(const Highlight& told, const TrackedUGC& captioned) {
    KeptFacts facts = FactsOf(captioned, false);
    facts.told = true;
    facts.shortName = told.GetSDKAppInfo().appShortName;
    facts.highlightDefinitionId = told.GetHighlightDefinitionId();
    facts.highlightName = told.GetHighlightName();
    facts.highlightGroupId = told.GetGroupId();
    facts.highlightTags = told.GetTags();
    facts.highlightSignificance = told.GetSignificance();
    facts.eventTimeStamp = told.GetTimeStamp();
    return facts;
}

void Apply(const KeptFacts& facts, TrackedUGC& record) {
    Enter(facts, record, false);
}

void FillIn(const KeptFacts& facts, TrackedUGC& record) {
    Enter(facts, record, true);
}
