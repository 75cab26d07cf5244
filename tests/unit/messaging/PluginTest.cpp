// A module of the test behind the real entry calls: what the container sees of the module base, the
// asynchronous tasks and the life cycle.

#include <gtest/gtest.h>

#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "common/plugincommon/JsonResponseAsync.h"
#include "common/results/Exception.h"
#include "tests/support/Counter.h"
#include "tests/support/FakeContainer.h"

using KXP::JSONMessage;
using KXP::RetVal;
using KXP::Value;

namespace {

// What a test makes the module do.
struct Behaviour {
    bool initialize = true;
    Counter running;
    Counter release;
    Counter destroyed;
};
std::shared_ptr<Behaviour> behaviour;

class WorkTask : public KXP::JsonResponseAsync<WorkTask> {
  public:
    using JsonResponseAsync::JsonResponseAsync;

    RetVal ExecuteAsync(const Value& payload) override {
        const std::string what = KXP::jsonGetValueOrDefault<std::string>(payload, "do", "");
        if (what == "fail") return {KXP::Code::kNotFound, "nothing there", 3};
        if (what == "throw 1") throw 1;
        finish_ = what;
        if (what == "block") {
            const std::shared_ptr<Behaviour> kept = behaviour;
            kept->running.Add();
            kept->release.WaitFor(1);
        }
        if (what == "later") {
            module().task_queue().FinishAsync(*this);
            return RetVal::Pending();
        }
        return {};
    }
    void FinishAsync(Value& result, KXP::Allocator& allocator) override {
        if (finish_ == "throw in finish") throw KXP::Exception(KXP::Code::kInvalidArgument, "too late", 0);
        result.AddMember("done", true, allocator);
    }

  private:
    std::string finish_;
};

class TestModule : public KXP::PluginModuleBase {
  public:
    TestModule() : PluginModuleBase("CobalixNative", "Gallery", R"({"definitions":{}})") {}
    ~TestModule() override { kept_->destroyed.Add(); }

    using PluginModuleBase::Initialize;
    using PluginModuleBase::Start;
    bool Initialize() override {
        RegisterSyncMethod("Echo", this, &TestModule::Echo);
        RegisterAsyncTask("Work", &WorkTask::Launch);
        return kept_->initialize;
    }
    bool Start() override { return true; }

    RetVal Echo(std::unique_ptr<JSONMessage> message, Value& result, KXP::Allocator& allocator) {
        const JSONMessage& request = *message;
        result.AddMember("echo", KXP::jsonGetValue<int>(request.payload(), "number"), allocator);
        return {};
    }

  private:
    const std::shared_ptr<Behaviour> kept_ = behaviour;
};

RetVal Result(const std::string& text) {
    return KXP::Message::GetReturnValue(*KXP::Message::CreateMessage(text.c_str()));
}

}  // namespace

KXP::IContainerConnector* KXP::IContainerConnector::CreatePluginInstance() {
    return PluginModuleBase::HandOver(std::make_shared<TestModule>());
}

void KXP::IContainerConnector::DestroyPluginInstance(IContainerConnector* instance) {
    PluginModuleBase::TakeBack(instance);
}

class PluginTest : public testing::Test {
  protected:
    PluginTest() { behaviour = std::make_shared<Behaviour>(); }
    ~PluginTest() override { plugin_.Uninitialize(); }

    void Up() {
        ASSERT_EQ(plugin_.Initialize(&FakeContainer::Callback, "{}", &container_), 2);
        ASSERT_EQ(container_.WaitFor(1).text, "_CmdInit_");
        ASSERT_EQ(plugin_.Start(), 2);
        ASSERT_EQ(container_.WaitFor(1, "_CmdStart_").text, "_CmdStart_");
    }

    std::string Ask(const std::string& method, const std::string& payload, const std::string& id = "id") {
        plugin_.OnJsonMessage(Envelope(method, id, payload).c_str());
        return container_.WaitFor(3, "\"reference_uniqueid\":\"" + id + "\"").text;
    }

    ZvCefPluginInfo& plugin_ = *ZvCefPluginGetInfo();
    FakeContainer container_;
};

TEST_F(PluginTest, RunsTheWholeLifeCycle) {
    EXPECT_EQ(
        plugin_.Start() + plugin_.Stop() + plugin_.Suspend() + plugin_.Resume() + plugin_.Uninitialize(), 0);
    EXPECT_EQ(plugin_.OnJsonMessage("no JSON"), 0) << "there is no instance yet";
    EXPECT_EQ(plugin_.version, 1);
    EXPECT_STREQ(plugin_.pluginName, "plugin_test");
    EXPECT_STREQ(plugin_.moduleList, "Gallery");
    ASSERT_EQ(plugin_.Initialize(&FakeContainer::Callback, nullptr, &container_), 2);
    ASSERT_EQ(container_.WaitFor(1).text, "_CmdInit_");
    EXPECT_EQ(plugin_.Suspend(), 0);
    EXPECT_FALSE(container_.All(6, "Suspend CefPlugin NOT IMPLEMENTED").empty());

    plugin_.OnJsonMessage(Envelope("Echo", "early", R"({"number":1})").c_str());
    EXPECT_EQ(plugin_.Start(), 2);
    EXPECT_NE(container_.WaitFor(3, "early").text.find("\"echo\":1"), std::string::npos);
    EXPECT_EQ(plugin_.Stop(), 2);
    ASSERT_EQ(container_.WaitFor(1, "_CmdStop_").text, "_CmdStop_");
    EXPECT_EQ(plugin_.Uninitialize(), 1);
    EXPECT_EQ(behaviour->destroyed.Get(), 1);
    EXPECT_EQ(plugin_.Uninitialize(), 0);
}

TEST_F(PluginTest, SynchronousRequestsAnswerOnTheWorker) {
    Up();
    const std::string answer = Ask("Echo", R"({"number":7})");
    EXPECT_NE(answer.find(R"("payload":{"echo":7,"_return_code":0,"_return_status":"Success")"),
              std::string::npos)
        << answer;
    EXPECT_NE(container_.All(3).back().thread, std::this_thread::get_id());
    // The handler throws: the client receives the failure, and the worker goes on.
    const RetVal failed = Result(Ask("Echo", "{}", "second"));
    EXPECT_EQ(static_cast<uint32_t>(failed.code), 0x8008F001u);
    EXPECT_EQ(failed.text, "Missing mandatory field number");

    plugin_.OnJsonMessage(Envelope("JOIN", "join").c_str());
    Ask("Echo", R"({"number":1})", "after");
    EXPECT_TRUE(container_.All(3, "\"join\"").empty());
}

TEST_F(PluginTest, TasksAnswerWhateverHappens) {
    Up();
    const std::tuple<const char*, uint32_t, const char*> rows[] = {
        {"work", 0, "Success"},
        {"fail", 0x80070002, "nothing there"},
        {"throw 1", 0x8000FFFF, "Success"},
        {"throw in finish", 0x80070057, "too late"},
        {"later", 0, "Success"},
    };
    for (const auto& [what, code, text] : rows) {
        const std::string answer = Ask("Work", std::string(R"({"do":")") + what + "\"}", what);
        const RetVal result = Result(answer);
        EXPECT_EQ(result.code, static_cast<int32_t>(code)) << what;
        EXPECT_EQ(result.text, text);
        EXPECT_EQ(answer.find("\"done\":true") != std::string::npos, code == 0) << answer;
    }
    EXPECT_FALSE(
        container_.All(6, "Caught exception while calling ExecuteAsync: 0x8000ffff[0]: Success").empty());
}

TEST_F(PluginTest, AFailedInitializeIsReportedWithTheResponse) {
    behaviour->initialize = false;
    ASSERT_EQ(plugin_.Initialize(&FakeContainer::Callback, "{}", &container_), 2);
    EXPECT_NE(container_.WaitFor(2).text.find("\"method\":\"_CmdInit_\""), std::string::npos);
    EXPECT_FALSE(container_.All(6, "Error initializing plugin: Initialize() failed").empty());
    EXPECT_EQ(plugin_.Uninitialize(), 1);

    EXPECT_EQ(plugin_.Initialize(&FakeContainer::Callback, "{", &container_), 0) << "no JSON";
    EXPECT_NE(container_.WaitFor(6, "Unable to parse JSON payload").text, "");
    EXPECT_EQ(plugin_.Start(), 0);
}

TEST_F(PluginTest, ASecondInitializeEndsTheFirstInstance) {
    Up();
    FakeContainer second;
    ASSERT_EQ(plugin_.Initialize(&FakeContainer::Callback, "{}", &second), 2);
    EXPECT_EQ(behaviour->destroyed.Get(), 1);
    const size_t before = container_.All(6).size();
    EXPECT_EQ(second.WaitFor(1).text, "_CmdInit_");
    EXPECT_EQ(container_.All(6).size(), before) << "the first callback hears no more";
    EXPECT_EQ(plugin_.Uninitialize(), 1);
}

TEST_F(PluginTest, CallbacksMayMisbehave) {
    ASSERT_EQ(plugin_.Initialize(nullptr, "{}", nullptr), 2);
    EXPECT_EQ(plugin_.Uninitialize(), 1);

    int refused = -1;
    container_.React([&](int notification, const std::string& text) {
        if (notification == 1 && text == "_CmdStart_") refused = plugin_.Uninitialize();
        if (notification == 3) throw 5;
    });
    Up();
    Ask("Echo", R"({"number":1})");
    EXPECT_NE(container_.WaitFor(6, "The container's callback threw").text, "");
    EXPECT_EQ(refused, 0);
    EXPECT_FALSE(container_.All(6, "must not be called from inside the callback").empty());
}

TEST_F(PluginTest, AStuckTaskDoesNotHoldTheShutdown) {
    Up();
    plugin_.OnJsonMessage(Envelope("Work", "stuck", R"({"do":"block"})").c_str());
    ASSERT_TRUE(behaviour->running.WaitFor(1));
    EXPECT_EQ(plugin_.Uninitialize(), 1);
    EXPECT_EQ(behaviour->destroyed.Get(), 0) << "the task still uses the module";
    behaviour->release.Add();
    EXPECT_TRUE(behaviour->destroyed.WaitFor(1));
    EXPECT_TRUE(container_.All(3, "stuck").empty());
}
