#include "plugin-modules/Gallery/src/tracker/WatchDispatch.h"

#include <exception>

#include "CobalixUtil.h"
#include "common/DirUtil.h"
#include "common/FileUtil.h"

namespace watcher {
namespace {

WatchAction Dispatch(int index, uint64_t id, const WatchEvent& event, IFileWatcherCallback& callback) {
    const char* const path = event.path.c_str();
    KXP_LOG(KXP::LogTrace, "[%d] %llx %llx %s", index, static_cast<unsigned long long>(id),
            static_cast<unsigned long long>(event.flags), path);
    KXP_LOG(KXP::LogTrace, "%s", DescribeWatchFlags(event.flags).c_str());
    const WatchAction action = DecideWatchAction(event.flags, WatchedItemExists(event));
    if (action == WatchAction::Track) {
        KXP_LOG(KXP::LogTrace, "Calling Track for %s", path);
        callback.Track(event.path);
    } else if (action == WatchAction::Untrack) {
        KXP_LOG(KXP::LogTrace, "Calling Untrack for %s", path);
        callback.Untrack(event.path);
    }
    return action;
}

}  // namespace

bool WatchedItemExists(const WatchEvent& event) {
    return (event.flags & ItemIsFile) != 0 ? KXP::FileExists(event.path) : KXP::DirectoryExists(event.path);
}

WatchAction DispatchWatchEvent(int index, uint64_t id, const WatchEvent& event,
                               IFileWatcherCallback& callback) noexcept {
    try {
        return Dispatch(index, id, event, callback);
    } catch (const std::exception& error) {
        KXP_LOG(KXP::LogFailure, "Watcher callback threw %s for %s", error.what(), event.path.c_str());
    } catch (...) {
        KXP_LOG(KXP::LogFailure, "Watcher callback threw for %s", event.path.c_str());
    }
    return WatchAction::None;
}

}  // namespace watcher
