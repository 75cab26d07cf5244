#include "gallery-host/verbs/Clean.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "common/text/TimeUtil.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/GalleryTable.h"
#include "gallery-host/output/Words.h"
#include "gallery-host/verbs/CleanPlan.h"
#include "gallery-host/verbs/FileVerbs.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Verbs.h"

namespace host {
namespace {

// As many as can be on record.
constexpr unsigned kAll = 1'000'000'000;

struct Usage {
    double usedKB = 0;
    double capKB = 0;
    bool capped = false;
};

double Number(const KXP::Value& object, const char* key) {
    const KXP::Value* const number = Find(object, key);
    return number && number->IsNumber() ? number->GetDouble() : 0;
}

Usage ReadUsage(const KXP::Value& settings) {
    const KXP::Value* const capacity = Find(settings, "capacity");
    if (!capacity) return {};
    const KXP::Value* const enabled = Find(*capacity, "enabled");
    return {Number(*capacity, "usageMB") * 1000,
            Number(*capacity, "totalDiskSpaceMB") * Number(*capacity, "capacityPercent") * 10,
            enabled && enabled->IsBool() && enabled->GetBool()};
}

// The settings say it in whole megabytes.
double SumKB(const KXP::Value::ConstArray& captures) {
    double sum = 0;
    for (const KXP::Value& capture : captures)
        sum += SizeKB(capture);
    return sum;
}

// In the form of a record's date.
std::string DaysAgo(unsigned days) {
    using std::chrono::milliseconds;
    const int64_t age = std::chrono::duration_cast<milliseconds>(std::chrono::hours(24) * days).count();
    const int64_t then = KXP::GetSystemTimeMs() - age;
    if (then < 0) throw Failure(kExitUsage, "--older-than leads to a time before 1970");
    return KXP::GetISO8601TimeFromMs(static_cast<uint64_t>(then))
               .substr(0, sizeof "2026-03-14T18:06:00" - 1) +
           "Z";
}

CleanRule RuleOf(const CleanOptions& options, const Usage& usage, const std::string& gallery) {
    CleanRule rule;
    rule.all = options.all;
    if (options.olderThanDays) rule.before = DaysAgo(*options.olderThanDays);
    if (!options.game.empty()) rule.folder = gallery + "/" + options.game + "/";
    rule.toKB = options.toKB;
    if (!rule.toKB && rule.before.empty() && rule.folder.empty()) {
        if (!usage.capped)
            throw Failure(kExitFailed, "the gallery has no cap; --to, --older-than or --game says what goes");
        rule.toKB = usage.capKB;
    }
    return rule;
}

// The form of an answer to GetRecentUGC.
KXP::Document Listed(const CleanPlan& plan) {
    KXP::Document list(rapidjson::kObjectType);
    KXP::Allocator& allocator = list.GetAllocator();
    KXP::Value captures(rapidjson::kArrayType);
    for (const KXP::Value* capture : plan.captures)
        captures.PushBack(KXP::Value(*capture, allocator), allocator);
    list.AddMember("recents", captures, allocator);
    return list;
}

void WritePlan(Output& output, const CleanPlan& plan, const Usage& usage, bool json) {
    KXP::Document list = Listed(plan);
    if (json) {
        list.AddMember("freedKB", plan.freedKB, list.GetAllocator());
        list.AddMember("usageKB", usage.usedKB, list.GetAllocator());
        WriteJson(output, list);
        return;
    }
    output.Write(RecentTable(list, WantsColour()));
    if (plan.captures.empty()) {
        Say("nothing would go of the " + HumanSize(usage.usedKB) + " in the gallery");
        return;
    }
    Say(Counted(plan.captures.size(), "capture") + " of " + HumanSize(plan.freedKB) +
        " would go to the trash, of " + HumanSize(usage.usedKB) + " in the gallery");
    Say("nothing is changed; --yes moves them");
}

void MoveAll(Session& session, Output& output, const CleanPlan& plan, bool json) {
    if (plan.captures.empty()) {
        Say("nothing has to go");
        return;
    }
    std::vector<std::string> paths;
    for (const KXP::Value* capture : plan.captures)
        paths.push_back(Text(*capture, "path"));
    FileOptions options;
    options.json = json;
    RunRemove(session, output, PlanRemovals(paths), options);
    if (!paths.empty())
        Say("their room is free when the trash is emptied; \"restore --last\" brings them back");
}

}  // namespace

void RunClean(Session& session, Output& output, const CleanOptions& options) {
    const std::string gallery = AwaitGallery(session);
    Usage usage = ReadUsage(AskSettings(session));
    const CleanRule rule = RuleOf(options, usage, gallery);
    KXP::Document request(rapidjson::kObjectType);
    request.AddMember("count", kAll, request.GetAllocator());
    const KXP::Document answer = AskForSuccess(session, "GetRecentUGC", request);
    usage.usedKB = std::max(usage.usedKB, SumKB(Elements(Payload(answer), "recents")));
    const CleanPlan plan = PlanCleaning(Elements(Payload(answer), "recents"), usage.usedKB, rule);
    if (options.yes)
        MoveAll(session, output, plan, options.json);
    else
        WritePlan(output, plan, usage, options.json);
    if (plan.spared > 0)
        Say(Counted(plan.spared, "highlight or captioned capture") + " would stay; --all takes them, too");
    if (plan.missingKB > 0)
        throw Failure(kExitFailed, "that leaves " + HumanSize(plan.missingKB) + " too much in the gallery");
}

}  // namespace host
