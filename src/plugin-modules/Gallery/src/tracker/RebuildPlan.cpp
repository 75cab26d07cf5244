#include "plugin-modules/Gallery/src/tracker/RebuildPlan.h"

#include <algorithm>
#include <set>
#include <string_view>
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
    Sort();
}

// The items themselves are large.
void RebuildPlan::Sort() {
    order_.reserve(items_.size());
    for (size_t i = 0; i < items_.size(); ++i)
        order_.emplace_back(items_[i].file.stamp.modifiedNs, i);
    std::sort(order_.begin(), order_.end(), [this](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first
                                  : items_[a.second].file.path < items_[b.second].file.path;
    });
}

std::optional<RebuildPlan::Step> RebuildPlan::Next() {
    std::optional<Step> step;
    if (next_ == order_.size()) return step;
    Item& item = items_[order_[next_++].second];
    step.emplace();
    step->path = std::move(item.file.path);
    step->unchanged = item.unchanged;
    // What our own file says of a file that has changed is no longer so.
    if (item.former != kNone && (item.unchanged || !isOwn_)) {
        step->former = std::move(former_[item.former]);
        step->former->stamp = item.file.stamp;
    }
    return step;
}
