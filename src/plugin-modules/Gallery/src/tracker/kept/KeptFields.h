// The members of KeptFacts, as lists that the line format, the comparison and the copying share.
#pragma once

#include <string_view>
#include <variant>

#include "plugin-modules/Gallery/src/tracker/kept/KeptCapture.h"

// A member of the facts and the same one of a record.
template <typename T>
struct KeptMember {
    T KeptFacts::*fact;
    T TrackedUGC::*field;
};
template <typename T>
KeptMember(T KeptFacts::*, T TrackedUGC::*) -> KeptMember<T>;

struct KeptField {
    std::string_view key;  // as in the tracker's file
    std::variant<KeptMember<std::string>, KeptMember<int32_t>> member;
    bool onlyFills = false;  // FillIn does not replace a text of the record
};

namespace kept_fields {

using F = KeptFacts;
using R = TrackedUGC;

inline constexpr KeptField kCaptions[] = {
    {"top", KeptMember{&F::topBarText, &R::topBarText}},
    {"bottom", KeptMember{&F::bottomBarText, &R::bottomBarText}},
};

inline constexpr KeptField kHighlight[] = {
    {"shortName", KeptMember{&F::shortName, &R::shortName}, true},
    {"highlightDefinitionId", KeptMember{&F::highlightDefinitionId, &R::highlightDefinitionId}, true},
    {"highlightName", KeptMember{&F::highlightName, &R::highlightName}, true},
    {"highlightGroupId", KeptMember{&F::highlightGroupId, &R::highlightGroupId}, true},
    {"highlightTags", KeptMember{&F::highlightTags, &R::highlightTags}},
    {"highlightSignificance", KeptMember{&F::highlightSignificance, &R::highlightSignificance}},
    {"highlightEventTimeStamp", KeptMember{&F::eventTimeStamp, &R::eventTimeStamp}},
};

}  // namespace kept_fields
