// What an event means for the tracker, given its flags and what is on disk. Pure functions, the same on every
// platform: each platform translates its events into these flags.
#pragma once

#include <cstdint>
#include <string>

namespace watcher {

enum WatchFlag : uint32_t {
    MustScanSubDirs = 0x1,
    UserDropped = 0x2,
    KernelDropped = 0x4,
    EventIdsWrapped = 0x8,
    HistoryDone = 0x10,
    RootChanged = 0x20,
    Mount = 0x40,
    Unmount = 0x80,
    ItemCreated = 0x100,
    ItemRemoved = 0x200,
    ItemInodeMetaMod = 0x400,
    ItemRenamed = 0x800,
    ItemModified = 0x1000,
    ItemFinderInfoMod = 0x2000,
    ItemChangeOwner = 0x4000,
    ItemXattrMod = 0x8000,
    ItemIsFile = 0x10000,
    ItemIsDir = 0x20000,
    ItemIsSymlink = 0x40000,
    OwnEvent = 0x80000,
};

struct WatchEvent {
    std::string path;
    uint32_t flags = 0;  // WatchFlag bits
};

enum class WatchAction { None, Track, Untrack };

// Both paths of a rename carry ItemRenamed; `exists` distinguishes the new path from the old one. For an item
// that appeared and disappeared within a window, what is there now decides as well.
WatchAction DecideWatchAction(uint32_t flags, bool exists);

// Whether there is an action for some answer to the question what is on disk.
bool MayHaveAction(uint32_t flags);

// Whether modification times, of the item or of the folder around it, may have changed.
bool DisturbsTimes(uint32_t flags);

// For the log: "kFSEventStreamEventFlags:", then a blank and the name of each flag.
std::string DescribeWatchFlags(uint32_t flags);

}  // namespace watcher
