// What every asynchronous request of the gallery shares: the way to the API object, and what becomes of
// exceptions.
#pragma once

#include <exception>
#include <memory>
#include <utility>

#include "common/Exception.h"
#include "common/plugincommon/JsonResponseAsync.h"
#include "plugin-modules/Gallery/src/GalleryAPIOf.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"

// Ends a request that came between two galleries. No std::exception, whose text would be that of a wrong
// argument.
struct NoTracker {
    KXP::RetVal value = kNoTracker;
};

template <typename T>
class GalleryTaskBase : public KXP::JsonResponseAsync<T> {
  public:
    // Throws KXP::Exception when the plug-in has no API object.
    GalleryTaskBase(KXP::PluginModuleBase& module, std::unique_ptr<KXP::JSONMessage> request)
        : KXP::JsonResponseAsync<T>(module, std::move(request)), api_(GalleryAPIOf(module)) {
        if (!api_) throw KXP::Exception(KXP::Code::kNoInterface, "Gallery API object not valid", 0);
    }

  protected:
    // The answer of `body`, a whole ExecuteAsync that may throw NoTracker; what else it throws is the task
    // layer's.
    template <typename Body>
    static KXP::RetVal WithTracker(const Body& body) {
        try {
            return body();
        } catch (const NoTracker& error) {
            return error.value;
        }
    }

    // The same, but the text of what it throws becomes that of a failure.
    template <typename Body>
    static KXP::RetVal Guarded(const Body& body) {
        return WithTracker([&]() -> KXP::RetVal { return KXP::RunRequest(body); });
    }

    // Lives at least as long as the task, also when the plug-in is gone before it.
    ZvGalleryAPI& api() { return *api_; }

    // The tracker of now, for as long as the caller has it. Throws NoTracker, which these two answer, between
    // two galleries.
    std::shared_ptr<UGCTracker> Tracker() {
        std::shared_ptr<UGCTracker> tracker = api_->GetUGCTracker();
        if (!tracker) throw NoTracker();
        return tracker;
    }

    // For CancelTask: ends a wait for the tracker that has this task's flag.
    void WakeTracker() {
        if (const std::shared_ptr<UGCTracker> tracker = api_->GetUGCTracker()) tracker->WakeWaiting();
    }

  private:
    const std::shared_ptr<ZvGalleryAPI> api_;
};
