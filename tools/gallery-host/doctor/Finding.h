// What one look at the machine has found.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace host {

enum class Health {
    kGood,
    kNote,  // nothing is broken, but somebody may want to know
    kBad,
};

struct Finding {
    std::string check;  // what was looked at, in a word
    Health health = Health::kGood;
    std::string text;                   // one line
    std::string advice;                 // what to do; empty when there is nothing
    std::function<std::string()> mend;  // does it, where that is safe; returns what it did
};

using Findings = std::vector<Finding>;

}  // namespace host
