#include "plugin-modules/Gallery/src/tracker/kept/KeptIndex.h"

#include <functional>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

// The same as KXP::NameOf, without a copy.
std::string_view NameIn(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

uint64_t Mix(uint64_t hash, uint64_t value) {
    return (hash ^ value) * 0x9E3779B97F4A7C15 + (hash >> 29);
}

uint64_t HashOfText(std::string_view text) {
    return std::hash<std::string_view>()(text);
}

}  // namespace

KeptIndex::Hash KeptIndex::HashOf(Way way, const std::string& path, const FileStamp& stamp) {
    if (way == ByPath) return HashOfText(path);
    const uint64_t content = Mix(Mix(0, stamp.size), static_cast<uint64_t>(stamp.modifiedNs));
    if (way == ByInode) return Mix(content, stamp.inode);
    return Mix(content, HashOfText(way == ByName ? NameIn(path) : std::string_view(path)));
}

bool KeptIndex::Matches(Way way, const KeptCapture& capture, const std::string& path,
                        const FileStamp& stamp) {
    if (way == ByPath) return capture.path == path;
    if (!capture.stamp.SameContent(stamp)) return false;
    if (way == ByInode) return capture.stamp.inode == stamp.inode;
    return way == ByName ? NameIn(capture.path) == NameIn(path) : capture.path == path;
}

KeptIndex::Entry* KeptIndex::Last(Way way, const std::string& path, const FileStamp& stamp) const {
    if (!Uses(way, stamp) || last_[way].empty()) return nullptr;
    const auto last = last_[way].find(HashOf(way, path, stamp));
    Entry* entry = last == last_[way].end() ? nullptr : last->second;
    while (entry && !Matches(way, *entry->capture, path, stamp))
        entry = entry->links[way].earlier;
    return entry;
}

KeptPtr KeptIndex::FindBy(Way way, const std::string& path, const FileStamp& stamp) const {
    const Entry* entry = Last(way, path, stamp);
    return entry ? entry->capture : nullptr;
}

void KeptIndex::Link(Way way, Entry& entry) {
    const KeptCapture& capture = *entry.capture;
    if (!Uses(way, capture.stamp)) return;
    Entry*& last = last_[way][HashOf(way, capture.path, capture.stamp)];
    if (last) last->links[way].later = &entry;
    entry.links[way].earlier = last;
    last = &entry;
}

void KeptIndex::Unlink(Way way, Entry& entry) {
    const KeptCapture& capture = *entry.capture;
    if (!Uses(way, capture.stamp)) return;
    const auto [earlier, later] = entry.links[way];
    if (earlier) earlier->links[way].later = later;
    if (later) {
        later->links[way].earlier = earlier;
        return;
    }
    const auto last = last_[way].find(HashOf(way, capture.path, capture.stamp));
    if (earlier) {
        last->second = earlier;
    } else {
        last_[way].erase(last);
    }
}

void KeptIndex::Reserve(size_t more) {
    // A small request may shrink a table, which takes time for every entry.
    if (more <= entries_.size()) return;
    for (auto& table : last_)
        table.reserve(2 * (entries_.size() + more));  // so that no single Put has to grow a large one
}

KeptPtr KeptIndex::Put(const KeptPtr& capture, size_t lineBytes) {
    KeptPtr former = Remove(capture->path, capture->stamp);
    if (capture->facts.IsEmpty()) return former;
    Entry& entry = entries_.emplace_back(Entry{capture, lineBytes});
    entry.self = std::prev(entries_.end());
    lineBytes_ += lineBytes;
    for (const Way way : {ByFile, ByInode, ByName, ByPath})
        Link(way, entry);
    return former;
}

KeptPtr KeptIndex::Remove(const std::string& path, const FileStamp& stamp) {
    Entry* const entry = Last(ByFile, path, stamp);
    if (!entry) return nullptr;
    for (const Way way : {ByFile, ByInode, ByName, ByPath})
        Unlink(way, *entry);
    lineBytes_ -= entry->lineBytes;
    KeptPtr removed = std::move(entry->capture);
    entries_.erase(entry->self);
    return removed;
}

KeptPtr KeptIndex::Find(const std::string& path, const FileStamp& stamp) const {
    for (const Way way : {ByFile, ByInode, ByName})
        if (KeptPtr found = FindBy(way, path, stamp)) return found;
    return nullptr;
}

KeptPtr KeptIndex::FindExact(const std::string& path, const FileStamp& stamp) const {
    return FindBy(ByFile, path, stamp);
}

// An entry that was put last may be of an earlier file at the path, which was found to be gone only now.
KeptPtr KeptIndex::LatestOf(const std::string& path, const FileStamp& stamp) const {
    if (KeptPtr exact = FindExact(path, stamp)) return exact;
    KeptPtr latest = FindBy(ByPath, path, {});
    return latest && latest->goneSince == 0 ? latest : nullptr;
}

std::vector<KeptPtr> KeptIndex::Snapshot() const {
    std::vector<KeptPtr> all;
    all.reserve(entries_.size());
    for (const Entry& entry : entries_)
        all.push_back(entry.capture);
    return all;
}
