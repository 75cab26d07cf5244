#include "plugin-modules/Gallery/src/watcher/WatchDispatch.h"

#include <exception>

#include "CobalixUtil.h"

namespace watcher {
namespace {

WatchAction Dispatch(int index, uint64_t id, const WatchEvent& event, ItemKind there,
                     IFileWatcherCallback& callback) {
    const char* const path = event.path.c_str();
    KXP_LOG(KXP::LogTrace, "[%d] %llx %llx %s", index, static_cast<unsigned long long>(id),
            static_cast<unsigned long long>(event.flags), path);
    KXP_LOG(KXP::LogTrace, "%s", DescribeWatchFlags(event.flags).c_str());
    if (there == ItemKind::Unknown) return WatchAction::None;
    const WatchAction action = DecideWatchAction(event.flags, WatchedItemExists(event, there));
    if (action == WatchAction::Track) {
        KXP_LOG(KXP::LogTrace, "Calling Track for %s", path);
        callback.Track(event.path, there == ItemKind::Folder);
    } else if (action == WatchAction::Untrack) {
        KXP_LOG(KXP::LogTrace, "Calling Untrack for %s", path);
        callback.Untrack(event.path);
    } else if (DisturbsTimes(event.flags)) {
        callback.Disturbed(event.path);
    }
    return action;
}

}  // namespace

bool WatchedItemExists(const WatchEvent& event, ItemKind there) {
    return there == ((event.flags & ItemIsFile) != 0 ? ItemKind::File : ItemKind::Folder);
}

WatchAction DispatchWatchEvent(int index, uint64_t id, const WatchEvent& event, ItemKind there,
                               IFileWatcherCallback& callback) noexcept {
    try {
        return Dispatch(index, id, event, there, callback);
    } catch (const std::exception& error) {
        KXP_LOG(KXP::LogFailure, "Watcher callback threw %s for %s", error.what(), event.path.c_str());
    } catch (...) {
        KXP_LOG(KXP::LogFailure, "Watcher callback threw for %s", event.path.c_str());
    }
    return WatchAction::None;
}

}  // namespace watcher
