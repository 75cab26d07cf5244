// Kept facts by the file that they belong to, also where that file has moved. Pure data without disk access
// or locks; its owner guards it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <unordered_map>
#include <vector>

#include "plugin-modules/Gallery/src/tracker/kept/KeptCapture.h"

// There is one entry for each path, size and time. Every call but Snapshot takes the time of a few lookups in
// hash tables, however many entries agree in one of these.
class KeptIndex {
  public:
    // Replaces the entry of the same path, size and time, or removes it if there is nothing to keep. Returns
    // what was replaced, or null. `lineBytes` is the size of the entry's line in the file.
    KeptPtr Put(const KeptPtr& capture, size_t lineBytes);
    KeptPtr Remove(const std::string& path, const FileStamp& stamp);

    // Prepares for so many more entries; for speed only.
    void Reserve(size_t more);

    // The entry of the file at `path`. If there is none, that of a file of the same size and time that has
    // the same inode, or else the same name: the file was moved. Of several the one that was put last; null
    // when there is none.
    KeptPtr Find(const std::string& path, const FileStamp& stamp) const;
    // The entry with this path, size and time, or null.
    KeptPtr FindExact(const std::string& path, const FileStamp& stamp) const;
    // The entry with this path, size and time. If there is none, as when the file has changed since, that put
    // last for the path; null if the file of that one is gone.
    KeptPtr LatestOf(const std::string& path, const FileStamp& stamp) const;

    // In the order of their coming.
    std::vector<KeptPtr> Snapshot() const;
    size_t size() const { return entries_.size(); }
    // The sum over all entries.
    uint64_t lineBytes() const { return lineBytes_; }

  private:
    // What an entry is found by.
    enum Way : size_t { ByFile, ByInode, ByName, ByPath, kWays };
    using Hash = uint64_t;

    struct Entry;
    // The neighbours among the entries of the same hash, in the order of their coming.
    struct Links {
        Entry* earlier = nullptr;
        Entry* later = nullptr;
    };
    struct Entry {
        KeptPtr capture;
        size_t lineBytes;
        std::array<Links, kWays> links{};
        std::list<Entry>::iterator self{};
    };

    static Hash HashOf(Way way, const std::string& path, const FileStamp& stamp);
    static bool Matches(Way way, const KeptCapture& capture, const std::string& path, const FileStamp& stamp);
    static bool Uses(Way way, const FileStamp& stamp) { return way != ByInode || stamp.inode != 0; }
    // The last entry that matches, or null.
    Entry* Last(Way way, const std::string& path, const FileStamp& stamp) const;
    KeptPtr FindBy(Way way, const std::string& path, const FileStamp& stamp) const;
    void Link(Way way, Entry& entry);
    void Unlink(Way way, Entry& entry);

    std::list<Entry> entries_;
    std::array<std::unordered_map<Hash, Entry*>, kWays> last_;  // of each hash
    uint64_t lineBytes_ = 0;
};
