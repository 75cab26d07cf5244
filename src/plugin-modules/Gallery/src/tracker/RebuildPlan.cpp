#include "plugin-modules/Gallery/src/tracker/RebuildPlan.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "base/Path.h"

namespace {

using Order = RebuildPlan::Order;

// The indexes below `count` by time, then path, then index. The elements themselves are large.
template <typename TimeOf, typename PathOf>
Order Sorted(size_t count, TimeOf timeOf, PathOf pathOf) {
    Order order;
    order.reserve(count);
    for (size_t i = 0; i < count; ++i)
        order.emplace_back(timeOf(i), i);
    std::sort(order.begin(), order.end(), [&](const auto& a, const auto& b) {
        if (a.first != b.first) return a.first < b.first;
        const int paths = pathOf(a.second).compare(pathOf(b.second));
        return paths != 0 ? paths < 0 : a.second < b.second;
    });
    return order;
}

bool IsOf(const TrackedUGC& record, const FoundFile& file, bool keepsInodes) {
    const FileStamp& before = record.stamp;
    return before.IsKnown() && (keepsInodes ? before == file.stamp : before.SameContent(file.stamp));
}

}  // namespace

void RebuildPlan::Former::TakeStamps(const std::optional<std::vector<FileStamp>>& stamps) {
    isOwn = stamps && stamps->size() == records.size();
    for (size_t i = 0; isOwn && i < records.size(); ++i)
        records[i]->stamp = (*stamps)[i];
}

RebuildPlan::RebuildPlan(FoundFiles found, Former former, bool keepsInodes)
    : former_(std::move(former.records)), isOwn_(former.isOwn) {
    items_.reserve(found.files.size());
    for (FoundFile& file : found.files)
        items_.push_back({std::move(file)});
    SortItems();
    const std::vector<bool> foundAgain = FindFormer();
    for (Item& item : items_)
        item.unchanged =
            isOwn_ && item.former != kNone && IsOf(*former_[item.former], item.file, keepsInodes);

    const std::set<std::string> unread(found.unread.begin(), found.unread.end());
    if (!isOwn_ || unread.empty()) return;
    for (size_t i = 0; i < former_.size(); ++i) {
        const std::string folder = KXP::ParentOf(former_[i]->path);
        if (!foundAgain[i] && (unread.count(folder) > 0 || unread.count(KXP::ParentOf(folder)) > 0))
            items_.push_back({{former_[i]->path, former_[i]->stamp}, i, true});
    }
    SortItems();
}

void RebuildPlan::SortItems() {
    order_ = Sorted(
        items_.size(), [this](size_t i) { return items_[i].file.stamp.modifiedNs; },
        [this](size_t i) -> const std::string& { return items_[i].file.path; });
}

// Sets what the old file said of each item, and returns which of its records that were. Most files have not
// changed, so both lists, in the order of times and paths, are much the same.
std::vector<bool> RebuildPlan::FindFormer() {
    Order former;
    const auto pathOf = [this](size_t i) -> const std::string& { return former_[i]->path; };
    if (isOwn_)
        former = Sorted(
            former_.size(), [this](size_t i) { return former_[i]->stamp.modifiedNs; }, pathOf);
    std::vector<bool> foundAgain(former_.size());
    std::vector<size_t> others;
    auto next = former.begin();
    for (const auto& [time, i] : order_) {
        Item& item = items_[i];
        while (next != former.end() &&
               std::tie(next->first, pathOf(next->second)) < std::tie(time, item.file.path))
            ++next;
        if (next == former.end() || next->first != time || pathOf(next->second) != item.file.path) {
            others.push_back(i);
            continue;
        }
        item.former = next->second;
        foundAgain[item.former] = true;
    }
    if (others.empty()) return foundAgain;

    std::unordered_map<std::string_view, size_t> byPath;
    for (size_t i = 0; i < former_.size(); ++i)
        if (!foundAgain[i]) byPath.emplace(pathOf(i), i);
    for (const size_t i : others) {
        const auto known = byPath.find(items_[i].file.path);
        if (known == byPath.end()) continue;
        items_[i].former = known->second;
        foundAgain[known->second] = true;
    }
    return foundAgain;
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
