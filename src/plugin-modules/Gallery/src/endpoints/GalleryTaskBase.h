// What every asynchronous request of the gallery shares: its API object, and how exceptions become answers.
#pragma once

#include <exception>
#include <memory>
#include <utility>

#include "common/plugincommon/JsonResponseAsync.h"
#include "common/results/Exception.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"

// Ends a request that arrives while there is no tracker. Not a std::exception: those become the answer for an
// invalid argument.
struct NoTracker {
    KXP::RetVal value = kNoTracker;
};

// T has the constructor T(module, request, api), where `api` is null when the plug-in has no API object.
template <typename T>
class GalleryTaskBase : public KXP::JsonResponseAsync<T> {
  public:
    // Makes the task for a request; the task queue owns it.
    static KXP::JsonResponseAsyncBase* Launch(KXP::PluginModuleBase& module,
                                              std::unique_ptr<KXP::JSONMessage> request,
                                              std::shared_ptr<ZvGalleryAPI> api) {
        return new T(module, std::move(request), std::move(api));
    }

    // Throws KXP::Exception when `api` is null.
    GalleryTaskBase(KXP::PluginModuleBase& module, std::unique_ptr<KXP::JSONMessage> request,
                    std::shared_ptr<ZvGalleryAPI> api)
        : KXP::JsonResponseAsync<T>(module, std::move(request)), api_(std::move(api)) {
        if (!api_) throw KXP::Exception(KXP::Code::kNoInterface, "Gallery API object not valid", 0);
    }

  protected:
    // Returns the result of `body`, a whole ExecuteAsync that may throw NoTracker. Other exceptions are left
    // to the task layer.
    template <typename Body>
    static KXP::RetVal WithTracker(const Body& body) {
        try {
            return body();
        } catch (const NoTracker& error) {
            return error.value;
        }
    }

    // The same, except that a std::exception becomes the failure that carries its text.
    template <typename Body>
    static KXP::RetVal Guarded(const Body& body) {
        return WithTracker([&]() -> KXP::RetVal { return KXP::RunRequest(body); });
    }

    // Lives at least as long as the task, even when the plug-in does not.
    ZvGalleryAPI& api() { return *api_; }

    // The current tracker, which stays usable for as long as the caller holds it. Throws NoTracker, which the
    // two functions above answer, when there is none.
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
