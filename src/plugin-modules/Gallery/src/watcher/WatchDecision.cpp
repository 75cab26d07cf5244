#include "plugin-modules/Gallery/src/watcher/WatchDecision.h"

#include <cstddef>
#include <iterator>

namespace watcher {
namespace {

// Indexed by bit, lowest first.
constexpr const char* kFlagNames[] = {
    "MustScanSubDirs",  "UserDropped", "KernelDropped", "EventIdsWrapped",   "HistoryDone",
    "RootChanged",      "Mount",       "Unmount",       "ItemCreated",       "ItemRemoved",
    "ItemInodeMetaMod", "ItemRenamed", "ItemModified",  "ItemFinderInfoMod", "ItemChangeOwner",
    "ItemXattrMod",     "ItemIsFile",  "ItemIsDir",     "ItemIsSymlink",     "OwnEvent",
};

}  // namespace

WatchAction DecideWatchAction(uint32_t flags, bool exists) {
    if (exists && (flags & (ItemCreated | ItemRenamed | ItemModified)) != 0) return WatchAction::Track;
    if (!exists && (flags & (ItemRemoved | ItemRenamed)) != 0) return WatchAction::Untrack;
    return WatchAction::None;
}

bool MayHaveAction(uint32_t flags) {
    return (flags & (ItemCreated | ItemRemoved | ItemRenamed | ItemModified)) != 0;
}

bool DisturbsTimes(uint32_t flags) {
    return MayHaveAction(flags) || (flags & ItemInodeMetaMod) != 0;
}

std::string DescribeWatchFlags(uint32_t flags) {
    std::string text = "kFSEventStreamEventFlags:";
    for (size_t bit = 0; bit < std::size(kFlagNames); ++bit) {
        if ((flags >> bit & 1U) != 0) text.append(" ").append(kFlagNames[bit]);
    }
    return text;
}

}  // namespace watcher
