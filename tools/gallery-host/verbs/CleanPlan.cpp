#include "gallery-host/verbs/CleanPlan.h"

#include <algorithm>
#include <tuple>

#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/Words.h"

namespace host {
namespace {

struct Candidate {
    const KXP::Value* capture = nullptr;
    bool isPrecious = false;
    std::string date;
    std::string path;
};

// Nobody can say these anew.
bool IsPrecious(const KXP::Value& capture) {
    const KXP::Value* const meme = Find(capture, "memeInfo");
    return Text(capture, "fileSubType") == "Highlight" ||
           (meme && !(Text(*meme, "topBarText") + Text(*meme, "bottomBarText")).empty());
}

bool Fits(const Candidate& candidate, const CleanRule& rule) {
    const bool isSaved = !candidate.date.empty();
    return isSaved && (rule.before.empty() || candidate.date < rule.before) &&
           candidate.path.compare(0, rule.folder.size(), rule.folder) == 0;
}

// Oldest first, those to keep as long as possible last.
std::vector<Candidate> InOrder(const KXP::Value::ConstArray& captures, const CleanRule& rule) {
    std::vector<Candidate> candidates;
    for (const KXP::Value& capture : captures) {
        const Candidate candidate{&capture, IsPrecious(capture), Text(capture, "date"),
                                  Text(capture, "path")};
        if (Fits(candidate, rule)) candidates.push_back(candidate);
    }
    std::sort(candidates.begin(), candidates.end(), [](const Candidate& one, const Candidate& other) {
        return std::tie(one.isPrecious, one.date, one.path) <
               std::tie(other.isPrecious, other.date, other.path);
    });
    return candidates;
}

}  // namespace

CleanPlan PlanCleaning(const KXP::Value::ConstArray& captures, double usageKB, const CleanRule& rule) {
    CleanPlan plan;
    const auto tooMuch = [&] { return rule.toKB ? usageKB - plan.freedKB - *rule.toKB : 1; };
    for (const Candidate& candidate : InOrder(captures, rule)) {
        if (tooMuch() <= 0) break;
        if (candidate.isPrecious && !rule.all) {
            ++plan.spared;
            continue;
        }
        plan.captures.push_back(candidate.capture);
        plan.freedKB += SizeKB(*candidate.capture);
    }
    if (rule.toKB) plan.missingKB = std::max(0.0, tooMuch());
    return plan;
}

}  // namespace host
