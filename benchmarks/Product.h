// The staged plug-in as a container has it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include <dlfcn.h>

#include "core/container/cef/ZvCefPlugin.h"
#include "tests/support/FakeContainer.h"

namespace benchmarks {

inline constexpr std::chrono::minutes kProductPatience{5};

inline std::string Quoted(const std::string& name, const std::string& value) {
    return "\"" + name + "\":\"" + value + "\"";
}

class Product {
  public:
    // The plug-in in this file, started, and with all captures of the gallery on record; `atOnce`, without
    // the wait for those.
    explicit Product(const char* plugin, bool atOnce = false) {
        void* const library = dlopen(plugin, RTLD_NOW | RTLD_LOCAL);
        if (!library) throw std::runtime_error(dlerror());
        plugin_ = reinterpret_cast<ZvCefPluginGetInfoFn>(dlsym(library, "ZvCefPluginGetInfo"))();
        plugin_->Initialize(&Product::Callback, "{}", this);
        // The answer and the line of a finished scan may come in either order.
        Await([&] { return commands_ == 1 && (atOnce || hasScanned_); });
        plugin_->Start();
        Await([&] { return commands_ == 2; });
    }
    ~Product() {
        plugin_->Stop();
        plugin_->Uninitialize();
    }
    Product(const Product&) = delete;
    Product& operator=(const Product&) = delete;

    // Milliseconds until the answer, which is "Success".
    double Ask(const std::string& method, const std::string& payload) {
        const std::string id = "ask" + std::to_string(++asked_);
        const std::string request = Envelope(method, id, payload);
        const auto start = std::chrono::steady_clock::now();
        answer_ =
            After("\"reference_uniqueid\":\"" + id + "\"", [&] { plugin_->OnJsonMessage(request.c_str()); });
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
        if (answer_.rfind("\"Success\"") == std::string::npos) throw std::runtime_error(answer_);
        return taken.count();
    }
    // The last one.
    const std::string& answer() const { return answer_; }

    // The first text with this part that the container gets after the work has begun.
    template <typename Work>
    std::string After(const std::string& part, Work work) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            wanted_ = part;
            found_.reset();
        }
        work();
        Await([&] { return found_.has_value(); });
        return std::move(*found_);
    }
    bool hasScanned() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return hasScanned_;
    }

  private:
    static void Callback(ZvCefPluginNotification_t notification, const char* text, void* context) {
        auto* self = static_cast<Product*>(context);
        std::unique_lock<std::mutex> lock(self->mutex_);
        if (notification == ZvCefPluginCommandSucceeded)
            ++self->commands_;
        else if (!self->hasScanned_ &&
                 std::string_view(text).find("Tracker update done") != std::string_view::npos)
            self->hasScanned_ = true;
        // An answer has its reference at its end.
        else if (!self->found_ && std::string_view(text).rfind(self->wanted_) != std::string_view::npos)
            self->found_ = text;
        else
            return;
        lock.unlock();
        self->changed_.notify_all();
    }
    template <typename Condition>
    void Await(Condition condition) {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!changed_.wait_for(lock, kProductPatience, condition)) throw std::runtime_error("no answer");
    }

    ZvCefPluginInfo* plugin_ = nullptr;
    std::mutex mutex_;
    std::condition_variable changed_;
    int commands_ = 0;
    bool hasScanned_ = false;
    std::string wanted_;
    std::optional<std::string> found_;
    std::string answer_;
    int asked_ = 0;
};

}  // namespace benchmarks
