#include "plugin-modules/Gallery/src/tracker/RebuildPlan.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "base/Path.h"

void RebuildPlan::Former::TakeStamps(const std::optional<std::vector<FileStamp>>& stamps) {
    isOwn = stamps && stamps->size() == records.size();
    for (size_t i = 0; isOwn && i < records.size(); ++i)
        records[i].stamp = (*stamps)[i];
}

RebuildPlan::RebuildPlan(FoundFiles found, Former former, bool keepsInodes)
    : former_(std::move(former.records)), isOwn_(former.isOwn) {
    std::unordered_map<std::string_view, size_t> byPath;
    byPath.reserve(former_.size());
    for (size_t i = 0; i < former_.size(); ++i)
        byPath.emplace(former_[i].path, i);

    items_.reserve(found.files.size());
    std::vector<bool> foundAgain(former_.size());
    for (FoundFile& file : found.files) {
        Item item{std::move(file)};
        const auto known = byPath.find(item.file.path);
        if (known != byPath.end()) {
            item.former = known->second;
            foundAgain[item.former] = true;
            const FileStamp& before = former_[item.former].stamp;
            item.unchanged = former.isOwn && before.IsKnown() &&
                             (keepsInodes ? before == item.file.stamp : before.SameContent(item.file.stamp));
        }
        items_.push_back(std::move(item));
    }

    const std::set<std::string> unread(found.unread.begin(), found.unread.end());
    for (size_t i = 0; former.isOwn && !unread.empty() && i < former_.size(); ++i) {
        const std::string folder = KXP::ParentOf(former_[i].path);
        if (!foundAgain[i] && (unread.count(folder) > 0 || unread.count(KXP::ParentOf(folder)) > 0))
            items_.push_back({{former_[i].path, former_[i].stamp}, i, true});
    }
    std::sort(items_.begin(), items_.end(), [](const Item& a, const Item& b) {
        return std::tie(a.file.stamp.modifiedNs, a.file.path) <
               std::tie(b.file.stamp.modifiedNs, b.file.path);
    });
}

std::optional<RebuildPlan::Step> RebuildPlan::Next() {
    if (next_ == items_.size()) return {};
    Item& item = items_[next_++];
    Step step{std::move(item.file.path), {}, item.unchanged};
    // What our own file says of a file that has changed is no longer so.
    if (item.former != kNone && (item.unchanged || !isOwn_)) {
        step.former = std::move(former_[item.former]);
        step.former->stamp = item.file.stamp;
    }
    return step;
}
