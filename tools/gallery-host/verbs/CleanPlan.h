// Decides which captures go when the gallery is to become smaller. Pure.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/json/Json.h"

namespace host {

struct CleanRule {
    std::optional<double> toKB;  // what the gallery may take in the end; without it all that fit go
    std::string before;          // only captures saved before this, in the form of a record's date
    std::string folder;          // only captures below this folder; empty for any
    bool all = false;            // highlights and captioned captures as well, after the others
};

struct CleanPlan {
    std::vector<const KXP::Value*> captures;  // in the order in which they go
    double freedKB = 0;
    double missingKB = 0;  // how far it stays above toKB
    size_t spared = 0;     // captures that only `all` would take
};

// `captures` are records as in the answer to GetRecentUGC; the plan refers to them. Highlights that are not
// saved yet stay. `usageKB` is what the gallery takes now.
CleanPlan PlanCleaning(const KXP::Value::ConstArray& captures, double usageKB, const CleanRule& rule);

}  // namespace host
