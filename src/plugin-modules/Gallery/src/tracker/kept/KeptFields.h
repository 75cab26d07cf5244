// The members of KeptFacts, as lists that the line format, the comparison and the copying share.
#pragma once

#include <string_view>
#include <variant>

#include "plugin-modules/Gallery/src/tracker/kept/KeptCapture.h"

// A member of the facts and the same one of a record.
struct KeptText {
    std::string KeptFacts::*fact;
    SharedText TrackedUGC::*field;
};
struct KeptNumber {
    int32_t KeptFacts::*fact;
    int32_t TrackedUGC::*field;
};

struct KeptField {
    std::string_view key;  // as in the tracker's file
    std::variant<KeptText, KeptNumber> member;
    bool onlyFills = false;  // FillIn does not replace a text of the record
};

namespace kept_fields {

using F = KeptFacts;
using R = TrackedUGC;

inline constexpr KeptField kCaptions[] = {
    {"top", KeptText{&F::topBarText, &R::topBarText}},
    {"bottom", KeptText{&F::bottomBarText, &R::bottomBarText}},
};

inline constexpr KeptField kHighlight[] = {
    {"shortName", KeptText{&F::shortName, &R::shortName}, true},
    {"highlightDefinitionId", KeptText{&F::highlightDefinitionId, &R::highlightDefinitionId}, true},
    {"highlightName", KeptText{&F::highlightName, &R::highlightName}, true},
    {"highlightGroupId", KeptText{&F::highlightGroupId, &R::highlightGroupId}, true},
    {"highlightTags", KeptNumber{&F::highlightTags, &R::highlightTags}},
    {"highlightSignificance", KeptNumber{&F::highlightSignificance, &R::highlightSignificance}},
    {"highlightEventTimeStamp", KeptText{&F::eventTimeStamp, &R::eventTimeStamp}},
};

}  // namespace kept_fields
