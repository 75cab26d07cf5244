// The plug-in as a container uses it: loaded from a product root and driven through its record of entry
// calls, with a home of its own.
#pragma once

#include <deque>
#include <stdexcept>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "core/container/cef/ZvCefPlugin.h"
#include "tests/support/FakeContainer.h"
#include "tests/support/TemporaryHome.h"

inline bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

class PluginLibrary {
  public:
    explicit PluginLibrary(const std::string& productRoot) {
        const std::string path = productRoot + "/Contents/Frameworks/plugins/Gallery/libGallery.so";
        handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!handle_) throw std::runtime_error(dlerror());
        info_ = reinterpret_cast<ZvCefPluginGetInfoFn>(dlsym(handle_, "ZvCefPluginGetInfo"))();
    }
    ~PluginLibrary() { dlclose(handle_); }
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    ZvCefPluginInfo* operator->() const { return info_; }

    // Starts the plug-in. False when it does not get as far as answering requests.
    bool Up(FakeContainer& container) const {
        return info_->Initialize(&FakeContainer::Callback, "{}", &container) == 2 &&
               container.WaitFor(1, "_CmdInit_").notification == 1 && info_->Start() == 2 &&
               container.WaitFor(1, "_CmdStart_").notification == 1;
    }

    bool Down(FakeContainer& container) const {
        return info_->Stop() == 2 && container.WaitFor(1, "_CmdStop_").notification == 1 &&
               info_->Uninitialize() == 1;
    }

    // The answer to one request, as JSON.
    std::string Ask(FakeContainer& container, const std::string& method, const std::string& uniqueid,
                    const std::string& payload) const {
        info_->OnJsonMessage(Envelope(method, uniqueid, payload).c_str());
        return container.WaitFor(3, "\"reference_uniqueid\":\"" + uniqueid + "\"").text;
    }

    const TemporaryHome& home() const { return home_; }

  private:
    const TemporaryHome home_;  // from before the library is loaded until after it is unloaded
    void* handle_ = nullptr;
    ZvCefPluginInfo* info_ = nullptr;
};

// A case with the plug-in loaded, which the case starts and stops.
class PluginTest : public testing::Test {
  protected:
    // Returns the payload of the answer, which lives as long as this.
    const KXP::Value& Ask(const std::string& method, const std::string& payload = "{}") {
        const std::string text =
            plugin_.Ask(container_, method, "ask" + std::to_string(answers_.size()), payload);
        KXP::Document& answer = answers_.emplace_back();
        EXPECT_FALSE(KXP::ParseJSON(text, answer).IsError()) << method;
        return KXP::JSONGetObject(answer, "payload");
    }
    std::string AskText(const std::string& method, const std::string& payload = "{}") {
        return KXP::WriteJSONToString(Ask(method, payload));
    }
    // "0 Success", or the code and text of a failure.
    std::string Result(const std::string& method, const std::string& payload = "{}") {
        const KXP::Value& answer = Ask(method, payload);
        return std::to_string(KXP::jsonGetValue<int>(answer, "_return_code")) + " " +
               KXP::jsonGetValue<std::string>(answer, "_return_status");
    }
    static std::string File(const std::string& path, const std::string& more = "") {
        return R"({"file":")" + path + "\"" + more + "}";
    }

    FakeContainer container_;
    const PluginLibrary plugin_{PRODUCT_ROOT};
    std::deque<KXP::Document> answers_;
};

// The same, with the plug-in running for as long as the case does.
class RunningPlugin : public PluginTest {
  protected:
    RunningPlugin() { EXPECT_TRUE(plugin_.Up(container_)); }
    ~RunningPlugin() override { EXPECT_TRUE(plugin_.Down(container_)); }
};
