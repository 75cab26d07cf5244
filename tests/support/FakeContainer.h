// A container that records every call of the library's callback. Everything is kept in the order of
// arrival; a test waits for what it needs.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/container/cef/ZvCefPlugin.h"

class FakeContainer {
  public:
    struct Told {
        int notification = 0;
        std::string text;
        std::thread::id thread;
    };

    // What Initialize takes, with this object as its context.
    static void Callback(ZvCefPluginNotification_t notification, const char* text, void* context) {
        auto* self = static_cast<FakeContainer*>(context);
        std::function<void(int, const std::string&)> react;
        {
            std::lock_guard<std::mutex> lock(self->mutex_);
            self->told_.push_back({notification, text, std::this_thread::get_id()});
            react = self->react_;
            self->changed_.notify_all();
        }
        if (react) react(notification, text);
    }

    // Called inside every callback, after it is recorded.
    void React(std::function<void(int, const std::string&)> react) {
        std::lock_guard<std::mutex> lock(mutex_);
        react_ = std::move(react);
    }

    // Waits until notifications of this kind whose text holds `part` have come `count` times, and returns the
    // last of them; an empty record after a minute.
    Told WaitFor(int notification, const std::string& part = "", size_t count = 1) {
        std::unique_lock<std::mutex> lock(mutex_);
        std::vector<Told> found;
        changed_.wait_for(lock, std::chrono::minutes(1), [&] {
            found = Find(notification, part);
            return found.size() >= count;
        });
        return found.size() >= count ? found.back() : Told{};
    }

    std::vector<Told> All(int notification, const std::string& part = "") const {
        std::lock_guard<std::mutex> lock(mutex_);
        return Find(notification, part);
    }

  private:
    std::vector<Told> Find(int notification, const std::string& part) const {
        std::vector<Told> found;
        for (const Told& told : told_)
            if (told.notification == notification && told.text.find(part) != std::string::npos)
                found.push_back(told);
        return found;
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Told> told_;
    std::function<void(int, const std::string&)> react_;
};

inline std::string Envelope(const std::string& method, const std::string& uniqueid,
                            const std::string& payload = "{}", const std::string& more = "") {
    return R"({"system":"CobalixNative","module":"Gallery","source_system":"Web","source_module":"Page","method":")" +
           method + R"(","uniqueid":")" + uniqueid + R"(","payload":)" + payload + more + "}";
}
